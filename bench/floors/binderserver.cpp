// usage: floor_binderserver NAME MODE
// The least that a binder service can be, registered under NAME. MODE is one of
//   blocking  waits in poll(), and answers every call with a word
//   qt        the same in an event loop of Qt
//   files     in an event loop, too: takes announcements of launchers, and writes what files are
//             not there yet

#include "common/rawbinder.h"
#include "common/sample.h"

#include <QCoreApplication>
#include <QFile>
#include <QSaveFile>
#include <QSocketNotifier>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr char Device[] = "/dev/marshhopper";
constexpr std::uint32_t LauncherAdded = 1;

/// Goes through an announcement, which is taken for well-formed.
class Fields
{
public:
    explicit Fields(const QByteArray &data)
        : m_data(data)
    {
    }

    QString string()
    {
        const std::int32_t length = int32();
        const QString text(reinterpret_cast<const QChar *>(m_data.constData() + m_position),
                           length);
        m_position += ((length + 1) * 2 + 3) & ~3;
        return text;
    }

    QByteArray bytes()
    {
        const std::int32_t size = int32();
        return m_data.mid(m_position, size);
    }

    std::int32_t int32()
    {
        std::int32_t value = 0;
        std::memcpy(&value, m_data.constData() + m_position, sizeof value);
        m_position += static_cast<int>(sizeof value);
        return value;
    }

private:
    const QByteArray &m_data;
    int m_position = 0;
};

void keep(const QString &path, const QByteArray &content)
{
    QFile old(path);
    if (old.open(QIODevice::ReadOnly) && old.readAll() == content)
        return;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.commit())
        std::exit(EXIT_FAILURE);
}

std::int32_t keepFiles(std::uint32_t code, const QByteArray &data)
{
    if (code != LauncherAdded)
        return 1;
    Fields fields(data);
    fields.int32();                                         // strict-mode policy
    fields.string();                                        // interface
    const int number = fields.string().rightRef(4).toInt(); // package
    fields.string();                                        // class
    fields.string();                                        // label
    fields.string();                                        // version
    const QString name = Sample::fileName(number);
    keep(QLatin1String("/var/lib/bramd/") + name + QLatin1String(".png"), fields.bytes());
    keep(QLatin1String("/usr/share/corvo-settings/entries/") + name + QLatin1String(".json"),
         Sample::settingsEntry(number));
    keep(QLatin1String("/usr/share/applications/") + name + QLatin1String(".desktop"),
         Sample::desktopEntry(number));
    return 0;
}

std::int32_t echo(std::uint32_t, const QByteArray &)
{
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QByteArray mode = argc == 3 ? argv[2] : "";
    const RawBinder::Serve serve = mode == "files" ? keepFiles : echo;
    RawBinder binder(Device);
    binder.registerName(QString::fromLocal8Bit(argv[1]));
    std::puts("registered");
    std::fflush(stdout);
    while (mode == "blocking") {
        binder.wait();
        binder.serve(serve);
    }
    QSocketNotifier notifier(binder.descriptor(), QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &application,
                     [&] { binder.serve(serve); });
    return QCoreApplication::exec();
}
