#include "fuzz/fuzztarget.h"
#include "launcher/desktopfile.h"
#include "support/hostfiles.h"

// The text of a desktop file, which anybody may have edited.

namespace {

/// Before a line's end, carriage returns are a part of that.
QMap<QString, QString> withoutLineEnds(QMap<QString, QString> entries)
{
    for (QString &value : entries) {
        while (value.endsWith(QLatin1Char('\r')))
            value.chop(1);
    }
    return entries;
}

} // namespace

void FuzzTarget::prepare() {}

void FuzzTarget::run(Input input)
{
    const QString path = QStringLiteral("/usr/share/applications/bramd_launcher_a-b.desktop");
    const QString key = QStringLiteral("X-added");
    const QByteArray content = input.rest();
    HostFiles::write(path, content);
    QMap<QString, QString> expected = DesktopFile::parse(content);

    {
        DesktopFile file(path);
        for (auto entry = expected.constBegin(); entry != expected.constEnd(); ++entry) {
            expect(!entry.key().contains(QLatin1Char('=')), "a key ends at the first sign");
            expect(file.value(entry.key()) == entry.value(), "the file is read", entry.key());
        }
        file.setValue(key, QStringLiteral("1"));
    }
    expected.insert(key, QStringLiteral("1"));

    const QByteArray written = HostFiles::read(path);
    expect(withoutLineEnds(DesktopFile::parse(written)) == withoutLineEnds(expected),
           "what was read is written");
    // bytes that are no UTF-8 become U+FFFD, of three bytes
    expect(written.size() <= content.size() * 3 + 100, "no more is written than was read");
}
