#include "support/testcase.h"
#include "tools/common/location.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

Q_DECLARE_METATYPE(Location)

namespace {

Location file(const char *path)
{
    return {QString::fromUtf8(path), true};
}

Location url(const char *text)
{
    return {QString::fromUtf8(text), false};
}

} // namespace

class TestLocation : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void an_argument_is_a_file_or_a_url_data();
    void an_argument_is_a_file_or_a_url();
    void behind_a_link_two_dots_are_where_it_leads_to();
    void a_file_has_the_type_of_its_name();
    void a_file_without_ending_has_the_type_of_its_content();
    void urls_have_no_type_data();
    void urls_have_no_type();
};

void TestLocation::an_argument_is_a_file_or_a_url_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<Location>("location");

    const auto row = [](const char *name, const char *argument, const Location &location) {
        QTest::newRow(name) << QString::fromUtf8(argument) << location;
    };
    row("absolute path", "/home/a/b.pdf", file("/home/a/b.pdf"));
    row("relative path", "b.pdf", file("/where/b.pdf"));
    row("relative path upwards", "../b.pdf", file("/b.pdf"));
    row("a path above the root", "/../../b.pdf", file("/b.pdf"));
    row("the root", "/", file("/"));
    row("path with dots and slashes to spare", "/a/.//x/../b.pdf/", file("/a/b.pdf"));
    row("path with every odd character", "/a/100% \"Åse\" $HOME 'x' #1?.pdf",
        file("/a/100% \"Åse\" $HOME 'x' #1?.pdf"));
    row("path with what looks escaped", "/a/%20.pdf", file("/a/%20.pdf"));
    row("path with a scheme further on", "a/b:c", file("/where/a/b:c"));
    row("a file named like a URL", "./mailto:x", file("/where/mailto:x"));
    row("one letter is no scheme", "c:x", file("/where/c:x"));
    row("file URL", "file:///home/a/b.pdf", file("/home/a/b.pdf"));
    row("file URL without authority", "file:/home/a/b.pdf", file("/home/a/b.pdf"));
    row("file URL of a relative path", "file:b.pdf", file("/where/b.pdf"));
    row("file URL of this host", "file://localhost/home/a/b.pdf", file("/home/a/b.pdf"));
    row("file URL with escapes", "file:///a/100%25%20%C3%85se%20%231.pdf",
        file("/a/100% Åse #1.pdf"));
    row("file URL with a bare percent sign", "file:///a/100% sun.pdf", file("/a/100% sun.pdf"));
    row("file URL of another host", "file://server/a.pdf", url("file://server/a.pdf"));
    row("link", "https://example.org/a%20b?c=d#e", url("https://example.org/a%20b?c=d#e"));
    row("URL without slashes", "mailto:a@example.org", url("mailto:a@example.org"));
    row("URL of an app's own scheme", "x-app+1.0:go", url("x-app+1.0:go"));
}

void TestLocation::an_argument_is_a_file_or_a_url()
{
    QFETCH(QString, argument);
    QFETCH(Location, location);

    const Location found = locationOf(argument, QStringLiteral("/where"));

    QCOMPARE(found.address, location.address);
    QCOMPARE(found.isFile, location.isFile);
}

void TestLocation::behind_a_link_two_dots_are_where_it_leads_to()
{
    const QTemporaryDir directory;
    const QDir root(QFileInfo(directory.path()).canonicalFilePath());
    QVERIFY(root.mkpath(QStringLiteral("there/below")) && root.mkpath(QStringLiteral("here")));
    QVERIFY(QFile::link(root.filePath(QStringLiteral("there/below")),
                        root.filePath(QStringLiteral("here/link"))));

    const auto addressOf = [&root](const char *path) {
        return root.relativeFilePath(
            locationOf(root.filePath(QLatin1String(path)), QStringLiteral("/where")).address);
    };
    QCOMPARE(addressOf("here/link/../a.pdf"), QStringLiteral("there/a.pdf"));
    QCOMPARE(addressOf("here/link/deep/../a.pdf"), QStringLiteral("here/link/a.pdf"));
    QCOMPARE(addressOf("here/link/a.pdf"), QStringLiteral("here/link/a.pdf"));
}

void TestLocation::a_file_has_the_type_of_its_name()
{
    QCOMPARE(mimeTypeOf(file("/nowhere/a.pdf")), QStringLiteral("application/pdf"));
}

void TestLocation::a_file_without_ending_has_the_type_of_its_content()
{
    const QTemporaryDir directory;
    const Location location{directory.filePath(QStringLiteral("scan")), true};
    QFile written(location.address);
    QVERIFY(written.open(QIODevice::WriteOnly) && written.write("%PDF-1.4\n") > 0);
    written.close();

    QCOMPARE(mimeTypeOf(location), QStringLiteral("application/pdf"));
}

void TestLocation::urls_have_no_type_data()
{
    QTest::addColumn<QString>("address");

    QTest::newRow("link") << QStringLiteral("https://example.org/a.pdf");
    QTest::newRow("file elsewhere") << QStringLiteral("sftp://example.org/a.pdf");
    QTest::newRow("no file at all") << QStringLiteral("tel:112");
}

void TestLocation::urls_have_no_type()
{
    QFETCH(QString, address);

    QCOMPARE(mimeTypeOf({address, false}), QString());
}

QTEST_GUILESS_MAIN(TestLocation)
#include "test_location.moc"
