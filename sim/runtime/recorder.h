#pragma once

#include "runtime/binderobject.h"

#include <QFile>
#include <QJsonObject>
#include <QString>

namespace SimRuntime {

/// Writes one JSON line per received transaction to a file, at once, for tests to read:
/// "service", "interface", "code", "oneway", "pid", "uid", "data" (hex of the whole parcel),
/// "objects" (byte positions), and what the service made of it: "method" and "decoded" when the
/// code is known, "problem" when the request was not exactly as it should be.
class Recorder
{
public:
    /// Appends to the file; an empty path records nothing. False, with one line, on failure.
    bool open(const QString &path);

    void record(const QString &service, const QString &interface, const IncomingCall &call,
                const QString &method, const QJsonObject &decoded, const QString &problem);

private:
    QFile m_file;
};

} // namespace SimRuntime
