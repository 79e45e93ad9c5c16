#pragma once

#include "support/hostfiles.h"

#include <QFile>

/// Stands in for "/usr/bin/update-desktop-database" in a private root: keeps the arguments of
/// each run and ends with status 1, which callers must not mind.
class UpdateDatabaseStub
{
public:
    /// `command` is a line of shell that runs before the end.
    explicit UpdateDatabaseStub(const QByteArray &command = "true")
        : m_mount(install(command))
    {
    }

    /// The runs since the last call, one line of arguments each.
    QByteArray takeRuns()
    {
        const QByteArray runs = HostFiles::read(runsFile());
        HostFiles::write(runsFile(), QByteArray());
        return runs;
    }

private:
    static QString runsFile() { return QStringLiteral("/run/database-runs"); }

    static HostFiles::Mount install(const QByteArray &command)
    {
        const QString script = QStringLiteral("/run/update-desktop-database");
        HostFiles::write(runsFile(), QByteArray());
        HostFiles::write(script,
                         "#!/bin/sh\necho \"$@\" >> /run/database-runs\n" + command + "\nexit 1\n");
        QFile::setPermissions(script, QFile::ReadOwner | QFile::ExeOwner);
        return HostFiles::Mount::file(script, QStringLiteral("/usr/bin/update-desktop-database"));
    }

    HostFiles::Mount m_mount;
};
