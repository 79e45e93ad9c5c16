#include "runtime/interfacetoken.h"

namespace SimRuntime {

namespace {

constexpr int WorkSourceLevel = 29;

// What native Android code without a thread policy of its own writes.
constexpr qint32 PolicyUntilSdk28 = 0x00400000;
constexpr auto PolicyFromSdk29 = qint32(0x80000000U);
constexpr qint32 UnsetWorkSource = -1;

} // namespace

void writeInterfaceToken(ParcelWriter *writer, const QString &descriptor, int sdk)
{
    if (sdk >= WorkSourceLevel) {
        writer->int32(PolicyFromSdk29);
        writer->int32(UnsetWorkSource);
    } else {
        writer->int32(PolicyUntilSdk28);
    }
    writer->string16(descriptor);
}

QString readInterfaceToken(ParcelReader *reader, int sdk)
{
    reader->int32();
    if (sdk >= WorkSourceLevel)
        reader->int32();
    return reader->string16();
}

} // namespace SimRuntime
