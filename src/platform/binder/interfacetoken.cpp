#include "platform/binder/interfacetoken.h"

#include "platform/binder/incomingdata.h"
#include "platform/binder/reader.h"

#include <QString>

#include <limits>

namespace Binder {
namespace InterfaceToken {

namespace {

constexpr int WorkSourceSdkLevel = 29;

// What Android's native code writes: no strict-mode checks of its own, "penalty gathering" set.
// The bit moved when the work source was added.
constexpr qint32 StrictModePolicy = 0x00400000;
constexpr qint32 StrictModePolicyWithWorkSource = std::numeric_limits<qint32>::min();
constexpr qint32 UnsetWorkSource = -1;

// Where the descriptor can begin, in each layout.
constexpr std::size_t DescriptorPositions[] = {4, 8};

Found readAt(const IncomingData &data, std::size_t position)
{
    Reader reader(&data, position);
    const char16_t *units = nullptr;
    int length = 0;
    // in the layout with the work source, position 4 usually reads as the null string
    if (!reader.readString16(&units, &length) || units == nullptr)
        return {};
    return {QString::fromUtf16(units, length).toUtf8(), data.size() - reader.bytesRemaining()};
}

} // namespace

void write(Writer writer, const QByteArray &descriptor, int sdkLevel)
{
    if (sdkLevel < WorkSourceSdkLevel) {
        writer.appendInt32(StrictModePolicy);
    } else {
        writer.appendInt32(StrictModePolicyWithWorkSource);
        writer.appendInt32(UnsetWorkSource);
    }
    writer.appendString16(descriptor.constData());
}

Found read(const IncomingData &data, const QByteArray &expectedDescriptor)
{
    Found other;
    for (const std::size_t position : DescriptorPositions) {
        Found found = readAt(data, position);
        if (found.descriptor == expectedDescriptor && !found.descriptor.isNull())
            return found;
        if (other.descriptor.isEmpty())
            other = found;
    }
    return other;
}

} // namespace InterfaceToken
} // namespace Binder
