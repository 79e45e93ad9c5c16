#include "fuzz/fuzztarget.h"
#include "launcher/packageblacklist.h"
#include "support/hostfiles.h"

// The text of the blacklist, and a package name in front of it to look for.

void FuzzTarget::prepare() {}

void FuzzTarget::run(Input input)
{
    const QString package = QString::fromUtf8(input.bytesBefore('\n'));
    const QByteArray content = input.rest();
    HostFiles::write(QStringLiteral("/etc/bramd/app-blacklist"), content);

    const PackageBlacklist blacklist;

    bool listed = false;
    const QList<QByteArray> lines = content.split('\n');
    for (const QByteArray &line : lines) {
        const QString name = QString::fromUtf8(line).trimmed();
        expect(name.isEmpty() || blacklist.contains(name), "every line is listed", name);
        listed = listed || name == package;
    }
    expect(!blacklist.contains(QString()), "nobody is not listed");
    expect(blacklist.contains(package) == (listed && !package.isEmpty()), "only lines are listed",
           package);
}
