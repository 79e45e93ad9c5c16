#include "support/testcase.h"
#include "tools/common/apkfile.h"
#include "tools/common/ziparchive.h"
#include "tools/ctl/literals.h"

#include <QBuffer>
#include <QFile>
#include <QTemporaryFile>
#include <QtTest>

namespace {

QByteArray contentOf(const QString &apk)
{
    QFile file("%1/%2.apk"_q.arg(QStringLiteral(APKS), apk));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray manifestOf(QByteArray archive)
{
    QBuffer buffer(&archive);
    buffer.open(QIODevice::ReadOnly);
    return ZipArchive::readFile(buffer, QByteArrayLiteral("AndroidManifest.xml"), 1 << 20);
}

} // namespace

class ApkFileTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void readsWhatAnApkIs_data();
    void readsWhatAnApkIs();
    void readsNothingFromOtherFiles();
    void survivesEveryShortArchive();
    void survivesEveryShortManifest();
    void survivesEveryDamagedByteOfAManifest();
    void readsNoFileThatIsTooLarge();
};

void ApkFileTest::readsWhatAnApkIs_data()
{
    QTest::addColumn<QString>("apk");
    QTest::addColumn<QString>("package");
    QTest::addColumn<QString>("version");
    QTest::newRow("papertrail") << "papertrail"_q
                                << "org.example.papertrail"_q
                                << "1.4"_q;
    QTest::newRow("metronome") << "metronome-2"_q
                               << "org.example.metronome"_q
                               << "2.0"_q;
}

void ApkFileTest::readsWhatAnApkIs()
{
    QFETCH(QString, apk);
    const ApkFile read = ApkFile::read("%1/%2.apk"_q.arg(QStringLiteral(APKS), apk));
    QVERIFY(read.isApk());
    QTEST(read.packageName, "package");
    QTEST(read.versionName, "version");
}

void ApkFileTest::readsNothingFromOtherFiles()
{
    QVERIFY(!ApkFile::read("/dev/zero"_q).isApk());
    QVERIFY(!ApkFile::read("/"_q).isApk());
    QVERIFY(!ApkFile::read("/no/such/file"_q).isApk());
    QVERIFY(!ApkFile::read("/etc/passwd"_q).isApk());
    QVERIFY(!parseManifest(QByteArray()).isApk());
}

void ApkFileTest::survivesEveryShortArchive()
{
    const QByteArray archive = contentOf("papertrail"_q);
    QVERIFY(!manifestOf(archive).isNull());
    for (int size = 0; size < archive.size(); size += 7)
        QVERIFY(manifestOf(archive.left(size)).isNull());
}

void ApkFileTest::survivesEveryShortManifest()
{
    const QByteArray manifest = manifestOf(contentOf("papertrail"_q));
    QVERIFY(parseManifest(manifest).isApk());
    for (int size = 0; size < manifest.size(); ++size) {
        const QString package = parseManifest(manifest.left(size)).packageName;
        QVERIFY(package.isEmpty() || package == "org.example.papertrail"_q);
    }
}

void ApkFileTest::survivesEveryDamagedByteOfAManifest()
{
    const QByteArray manifest = manifestOf(contentOf("papertrail"_q));
    for (int position = 0; position < manifest.size(); ++position) {
        QByteArray damaged = manifest;
        damaged[position] = '\xff';
        const ApkFile read = parseManifest(damaged);
        QVERIFY(!read.packageName.contains(QLatin1Char('\n')));
    }
}

void ApkFileTest::readsNoFileThatIsTooLarge()
{
    QByteArray archive = contentOf("papertrail"_q);
    const int size = manifestOf(archive).size();
    QBuffer buffer(&archive);
    buffer.open(QIODevice::ReadOnly);
    const QByteArray name = QByteArrayLiteral("AndroidManifest.xml");
    QCOMPARE(ZipArchive::readFile(buffer, name, size).size(), size);
    QVERIFY(ZipArchive::readFile(buffer, name, size - 1).isNull());
    QVERIFY(ZipArchive::readFile(buffer, QByteArrayLiteral("nothing"), size).isNull());
}

QTEST_GUILESS_MAIN(ApkFileTest)
#include "tst_ctlapkfile.moc"
