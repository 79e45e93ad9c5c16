#include "platform/binder/standardtransaction.h"

#include "platform/binder/writer.h"

namespace Binder {

bool answerStandardTransaction(quint32 code, const char *descriptor, Writer reply)
{
    switch (code) {
    case PingTransaction:
        reply.appendInt32(0);
        return true;
    case InterfaceTransaction:
        reply.appendString16(descriptor);
        return true;
    case DumpTransaction: // any service can be dumped at any time, and its dumper waits
    case ShellCommandTransaction:
    case SystemPropertiesTransaction:
        return true;
    default:
        return false;
    }
}

} // namespace Binder
