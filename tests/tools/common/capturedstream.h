#pragma once

#include <QByteArray>
#include <QTemporaryFile>

#include <cstdio>
#include <unistd.h>

/// Takes what is written to one of the standard streams while it lives.
class CapturedStream
{
public:
    explicit CapturedStream(FILE *stream)
        : m_stream(stream)
        , m_original(dup(fileno(stream)))
    {
        fflush(stream);
        m_isTaken = m_file.open() && dup2(m_file.handle(), fileno(stream)) >= 0;
    }

    ~CapturedStream()
    {
        fflush(m_stream);
        dup2(m_original, fileno(m_stream));
        close(m_original);
    }

    CapturedStream(const CapturedStream &) = delete;
    CapturedStream &operator=(const CapturedStream &) = delete;

    /// What was written so far; null when the stream could not be taken.
    QByteArray written()
    {
        fflush(m_stream);
        QFile file(m_file.fileName());
        return m_isTaken && file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    FILE *m_stream;
    int m_original;
    QTemporaryFile m_file;
    bool m_isTaken = false;
};
