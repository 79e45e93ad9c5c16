#include "runtime/driverstream.h"

#include <linux/android/binder.h>

namespace SimRuntime {

QVector<DriverReturn> splitReturns(const QByteArray &stream)
{
    QVector<DriverReturn> commands;
    int position = 0;
    while (stream.size() - position >= int(sizeof(quint32))) {
        DriverReturn command;
        memcpy(&command.code, stream.constData() + position, sizeof command.code);
        position += int(sizeof command.code);
        const int size = int(_IOC_SIZE(command.code));
        if (stream.size() - position < size)
            break;
        command.payload = stream.mid(position, size);
        position += size;
        commands.append(command);
    }
    return commands;
}

void appendCommand(QByteArray *stream, quint32 code)
{
    stream->append(reinterpret_cast<const char *>(&code), sizeof code);
}

} // namespace SimRuntime
