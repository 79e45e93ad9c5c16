#include "config/pathmapping.h"
#include "support/testcase.h"

#include <QtTest>

namespace {

QString quoted(const QString &text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

} // namespace

class PathMappingTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void mapsHostPaths_data();
    void mapsHostPaths();
    void makesUrls_data();
    void makesUrls();
    void logsEachStep();
    void logsNoRemovedHomeOutsideHome();
};

void PathMappingTest::mapsHostPaths_data()
{
    QTest::addColumn<QString>("hostPath");
    QTest::addColumn<QString>("androidPath");

    const auto row = [](const char *name, const char *hostPath, const char *androidPath) {
        QTest::newRow(name) << QString::fromUtf8(hostPath) << QString::fromUtf8(androidPath);
    };
    row("a file in the home directory", "/home/user/Documents/a.pdf",
        "/storage/8ff87de4-0b37-4799-b09a-82773e869e07/Documents/a.pdf");
    row("a file of the runtime's shared storage", "/home/user/android_storage/Download/b.png",
        "/storage/emulated/0/Download/b.png");
    row("a URL of a file in the home directory", "file:///home/user/c.txt",
        "/storage/8ff87de4-0b37-4799-b09a-82773e869e07/c.txt");
    row("a file on a memory card", "/run/media/user/sdcard/d.mp3", "/storage/sdcard/d.mp3");
    row("a file elsewhere stays", "/tmp/e", "/tmp/e");
    row("every android_storage is replaced", "/home/user/android_storage/x/android_storage/y",
        "/storage/emulated/0/x/storage/emulated/0/y");
    row("android_storage deeper in the home directory is a plain directory",
        "/home/user/x/android_storage/y",
        "/storage/8ff87de4-0b37-4799-b09a-82773e869e07/x/android_storage/y");
    row("android_storage itself", "/home/user/android_storage", "/storage/emulated/0");
    row("a name that only begins with android_storage", "/home/user/android_storage2/z",
        "/storage/emulated/02/z");
    row("android_storage is told by case", "/home/user/Android_Storage/z",
        "/storage/8ff87de4-0b37-4799-b09a-82773e869e07/Android_Storage/z");
    row("homework begins with home but is not in it", "/homework/x",
        "/storage/8ff87de4-0b37-4799-b09a-82773e869e07/homework/x");
    row("home alone", "/home", "/storage/8ff87de4-0b37-4799-b09a-82773e869e07/home");
    row("home with a slash", "/home/", "/storage/8ff87de4-0b37-4799-b09a-82773e869e07");
    row("the home directory itself", "/home/user", "/storage/8ff87de4-0b37-4799-b09a-82773e869e07");
    row("the home directory with a slash", "/home/user/",
        "/storage/8ff87de4-0b37-4799-b09a-82773e869e07/");
    row("only the first home is removed", "/home/user/home/user/f",
        "/storage/8ff87de4-0b37-4799-b09a-82773e869e07/home/user/f");
    row("home is told by case", "/HOME/user/f", "/HOME/user/f");
    row("home in the middle", "/mnt/home/user/f", "/mnt/home/user/f");
    row("a URL of a file on a memory card, one slash", "file:/run/media/u/card/f",
        "/storage/card/f");
    row("the user's media directory itself", "/run/media/u", "/storage");
    row("the media directory with a slash", "/run/media/", "/storage");
    row("the media directory without a slash", "/run/media", "/run/media");
    row("a URL with escapes", "file:///home/user/a%20b%C3%A9.txt",
        "/storage/8ff87de4-0b37-4799-b09a-82773e869e07/a bé.txt");
    row("a URL with stray percent signs", "file:///tmp/100%", "/tmp/100%");
    row("a URL of another scheme", "https://example.org/home/user/x",
        "https://example.org/home/user/x");
    row("the file scheme is told by case", "FILE:///home/user/x", "FILE:///home/user/x");
    row("a plain path keeps its percent signs", "/home/user/a%20b",
        "/storage/8ff87de4-0b37-4799-b09a-82773e869e07/a%20b");
    row("a relative path", "home/user/x", "home/user/x");
    row("nothing", "", "");
    row("line breaks in names", "/home/us\ner/a\nb",
        "/storage/8ff87de4-0b37-4799-b09a-82773e869e07/a\nb");
}

void PathMappingTest::mapsHostPaths()
{
    QFETCH(QString, hostPath);
    QFETCH(QString, androidPath);

    QCOMPARE(PathMapping::toAndroidPath(hostPath), androidPath);
}

void PathMappingTest::makesUrls_data()
{
    QTest::addColumn<QString>("hostPath");
    QTest::addColumn<QUrl>("url");

    QTest::newRow("an absolute path becomes a file URL")
        << QStringLiteral("/run/media/u/card/a b%20#?.txt")
        << QUrl(QStringLiteral("file:///storage/card/a%20b%2520%23%3F.txt"));
    QTest::newRow("a web address stays one") << QStringLiteral("https://example.org/a?b=c#d")
                                             << QUrl(QStringLiteral("https://example.org/a?b=c#d"));
    QTest::newRow("other text is read in tolerant mode")
        << QStringLiteral("content://x/100% sure") << QUrl(QStringLiteral("content://x/100% sure"));
    QTest::newRow("nothing") << QString() << QUrl();
}

void PathMappingTest::makesUrls()
{
    QFETCH(QString, hostPath);
    QFETCH(QUrl, url);

    QCOMPARE(PathMapping::toAndroidUrl(hostPath), url);
}

void PathMappingTest::logsEachStep()
{
    PathMapping::toAndroidPath(QStringLiteral("file:///home/user/c.txt"));

    QCOMPARE(takeLog(QtDebugMsg, QStringLiteral("com.corvo.bramd.config")),
             QStringList({
                 QStringLiteral("Orig path:  ") + quoted(QStringLiteral("file:///home/user/c.txt")),
                 QStringLiteral("Removed home: ") + quoted(QStringLiteral("/c.txt")),
                 QStringLiteral("Final path:  ") +
                     quoted(QStringLiteral("/storage/8ff87de4-0b37-4799-b09a-82773e869e07/c.txt")),
             }));
}

void PathMappingTest::logsNoRemovedHomeOutsideHome()
{
    PathMapping::toAndroidPath(QStringLiteral("/tmp/e"));

    QCOMPARE(takeLog(QtDebugMsg, QStringLiteral("com.corvo.bramd.config")),
             QStringList({QStringLiteral("Orig path:  ") + quoted(QStringLiteral("/tmp/e")),
                          QStringLiteral("Final path:  ") + quoted(QStringLiteral("/tmp/e"))}));
}

QTEST_GUILESS_MAIN(PathMappingTest)
#include "tst_pathmapping.moc"
