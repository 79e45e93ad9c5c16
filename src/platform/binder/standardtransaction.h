#pragma once

#include <QtGlobal>

namespace Binder {

class Writer;

/// The transactions that every binder object answers, whatever its interface. They carry no
/// interface token (AOSP frameworks/native, libs/binder/include/binder/IBinder.h).
enum StandardTransaction : quint32 {
    PingTransaction = 0x5f504e47,            // "_PNG"
    InterfaceTransaction = 0x5f4e5446,       // "_NTF"
    DumpTransaction = 0x5f444d50,            // "_DMP"
    ShellCommandTransaction = 0x5f434d44,    // "_CMD"
    SystemPropertiesTransaction = 0x5f535052 // "_SPR"
};

/// Writes the answer of an object with this descriptor. False, with nothing written, when `code`
/// is none of these.
bool answerStandardTransaction(quint32 code, const char *descriptor, Writer reply);

} // namespace Binder
