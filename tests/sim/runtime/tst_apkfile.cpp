#include "runtime/apkfile.h"
#include "runtime/lettericon.h"
#include "runtime/png.h"
#include "sim/runtime/apkbuilder.h"
#include "support/testcase.h"

#include <QProcess>
#include <QtTest>

using namespace SimRuntime;

namespace {

const QString Papertrail = QStringLiteral(SIM_APKS "/papertrail.apk");

// aapt refuses PNG files that are not; one pixel each, told apart by its colour.
QByteArray picture(quint32 colour)
{
    return encodePng(1, {colour});
}

// aapt writes PNG files anew, so pictures are compared by what is in them.
QByteArray pixelsOf(const QByteArray &png)
{
    QProcess python;
    python.start(
        QStringLiteral("/usr/bin/python3"),
        {QStringLiteral("-c"),
         QStringLiteral("import sys, io; from PIL import Image;"
                        "i = Image.open(io.BytesIO(sys.stdin.buffer.read()));"
                        "print(i.size[0], i.convert('RGBA').tobytes()[:4].hex(), end='')")});
    python.write(png);
    python.closeWriteChannel();
    python.waitForFinished();
    return python.readAllStandardOutput();
}

bool writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class ApkFileTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void readsARealApk();
    void takesTheDensestPicture();
    void passesAnAdaptiveIconByWhenThereIsAPicture();
    void takesThePictureInsideAnAdaptiveIcon();
    void drawsAnIconWhenThereIsNone();
    void resolvesTextsWithSpecialCharacters();
    void refusesWhatIsNoApk_data();
    void refusesWhatIsNoApk();
    void refusesAnArchiveWithoutManifest();
    void refusesABadPackageName();
};

void ApkFileTest::readsARealApk()
{
    const ApkReading reading = readApk(Papertrail);

    QCOMPARE(reading.result, InstallSucceeded);
    const ApkInfo &info = reading.info;
    QCOMPARE(info.package, QStringLiteral("org.example.papertrail"));
    QCOMPARE(info.versionCode, 140);
    QCOMPARE(info.versionName, QStringLiteral("1.4"));
    QCOMPARE(info.label, QStringLiteral("Paper Trail"));
    QCOMPARE(info.minimumSdk, 21);
    QCOMPARE(info.launchers.size(), 1);
    QCOMPARE(info.launchers.at(0).className, QStringLiteral("org.example.papertrail.MainActivity"));
    QCOMPARE(info.launchers.at(0).label, QStringLiteral("Paper Trail"));
    QCOMPARE(pixelsOf(info.launchers.at(0).icon).split(' ').constFirst(), QByteArray("192"));
    QCOMPARE(info.handlers.size(), 4);
    QCOMPARE(info.handlers.at(0).mimeTypes, QStringList{QStringLiteral("application/pdf")});
    QCOMPARE(info.handlers.at(1).schemes, QStringList{QStringLiteral("https")});
    QCOMPARE(info.handlers.at(1).hosts, QStringList{QStringLiteral("papertrail.example.org")});
    QCOMPARE(info.handlers.at(2).shareMimeTypes,
             (QStringList{QStringLiteral("application/pdf"), QStringLiteral("text/plain")}));
    QVERIFY(!info.handlers.at(2).multi);
    QVERIFY(info.handlers.at(3).multi);
    QCOMPARE(info.handlers.at(3).icon, info.launchers.at(0).icon);
}

void ApkFileTest::takesTheDensestPicture()
{
    ApkBuilder builder;
    builder.addResource(QStringLiteral("mipmap-mdpi/icon.png"), picture(0xff111111));
    builder.addResource(QStringLiteral("mipmap-xxhdpi/icon.png"), picture(0xff333333));
    builder.addResource(QStringLiteral("mipmap-xhdpi/icon.png"), picture(0xff222222));
    const QString apk = builder.build(
        manifestOf("org.example.a", 1, launcherActivity(".Main"), "android:icon=\"@mipmap/icon\""));

    QCOMPARE(pixelsOf(readApk(apk).info.launchers.at(0).icon), QByteArray("1 333333ff"));
}

void ApkFileTest::passesAnAdaptiveIconByWhenThereIsAPicture()
{
    const ApkReading reading = readApk(QStringLiteral(SIM_APKS "/weather.apk"));

    QCOMPARE(pixelsOf(reading.info.launchers.at(0).icon).split(' ').constFirst(),
             QByteArray("192"));
}

void ApkFileTest::takesThePictureInsideAnAdaptiveIcon()
{
    ApkBuilder builder;
    builder.addResource(QStringLiteral("drawable/front.png"), picture(0xff123456));
    builder.addResource(QStringLiteral("drawable/back.png"), picture(0xff654321));
    builder.addResource(
        QStringLiteral("mipmap-anydpi-v26/icon.xml"),
        "<adaptive-icon xmlns:android=\"http://schemas.android.com/apk/res/android\">"
        "<background android:drawable=\"@drawable/back\" />"
        "<foreground android:drawable=\"@drawable/front\" /></adaptive-icon>");
    const QString apk = builder.build(
        manifestOf("org.example.a", 1, launcherActivity(".Main"), "android:icon=\"@mipmap/icon\""));

    QCOMPARE(pixelsOf(readApk(apk).info.launchers.at(0).icon), QByteArray("1 123456ff"));
}

void ApkFileTest::drawsAnIconWhenThereIsNone()
{
    ApkBuilder builder;
    const QString apk = builder.build(
        manifestOf("org.example.a", 1, launcherActivity(".Main"), "android:label=\"Zoo\""));

    QCOMPARE(readApk(apk).info.launchers.at(0).icon, letterIcon(QStringLiteral("Zoo")));
}

void ApkFileTest::resolvesTextsWithSpecialCharacters()
{
    ApkBuilder builder;
    builder.addResource(QStringLiteral("values/strings.xml"),
                        "<resources><string name=\"n\">It\\'s \\\"q\\\" \\\\ "
                        "\xe5\xa4\xa9\xf0\x9f\x8c\xa6</string></resources>");
    const QString apk = builder.build(
        manifestOf("org.example.a", 1, launcherActivity(".Main"), "android:label=\"@string/n\""));

    QCOMPARE(readApk(apk).info.label,
             QString::fromUtf8("It's \"q\" \\ \xe5\xa4\xa9\xf0\x9f\x8c\xa6"));
}

void ApkFileTest::refusesWhatIsNoApk_data()
{
    QTest::addColumn<QByteArray>("content");
    const QByteArray apk = readFile(Papertrail);
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("not an APK");
    QTest::newRow("cut off in the middle") << apk.left(apk.size() / 2);
    QTest::newRow("cut off before the end record") << apk.left(apk.size() - 22);
}

void ApkFileTest::refusesWhatIsNoApk()
{
    QFETCH(QByteArray, content);
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("a.apk"));
    QVERIFY(writeFile(path, content));

    QCOMPARE(readApk(path).result, InstallFailedInvalidApk);
}

void ApkFileTest::refusesAnArchiveWithoutManifest()
{
    const QTemporaryDir directory;
    QProcess python;
    python.setWorkingDirectory(directory.path());
    python.start(
        QStringLiteral("/usr/bin/python3"),
        {QStringLiteral("-c"), QStringLiteral("import zipfile;"
                                              "zipfile.ZipFile('none.apk', 'w').writestr('a', 'b');"
                                              "zipfile.ZipFile('bad.apk', 'w').writestr("
                                              "'AndroidManifest.xml', '<manifest/>')")});
    QVERIFY(python.waitForFinished() && python.exitCode() == 0);

    QCOMPARE(readApk(directory.filePath(QStringLiteral("none.apk"))).result,
             InstallParseFailedBadManifest);
    QCOMPARE(readApk(directory.filePath(QStringLiteral("bad.apk"))).result,
             InstallParseFailedBadManifest);
}

void ApkFileTest::refusesABadPackageName()
{
    ApkBuilder builder;
    const QString apk = builder.build(manifestOf("a.b", 1, {}));
    QByteArray content = readFile(apk);
    QVERIFY(!content.isEmpty());

    // aapt checks names itself, so the name is replaced in the manifest that it made.
    QProcess python;
    python.setWorkingDirectory(QFileInfo(apk).path());
    python.start(QStringLiteral("/usr/bin/python3"),
                 {QStringLiteral("-c"),
                  QStringLiteral("import sys, zipfile;"
                                 "m = zipfile.ZipFile(sys.argv[1]).read('AndroidManifest.xml');"
                                 "b = m.replace('a.b'.encode('utf-16le'), 'a/b'.encode('utf-16le'))"
                                 ".replace(b'a.b', b'a/b');"
                                 "assert b != m;"
                                 "zipfile.ZipFile('bad.apk', 'w').writestr("
                                 "'AndroidManifest.xml', b)"),
                  apk});
    QVERIFY(python.waitForFinished());
    QCOMPARE(python.exitCode(), 0);

    QCOMPARE(readApk(builder.path(QStringLiteral("bad.apk"))).result,
             InstallParseFailedBadPackageName);
}

QTEST_GUILESS_MAIN(ApkFileTest)
#include "tst_apkfile.moc"
