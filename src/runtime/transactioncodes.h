#pragma once

#include <QtGlobal>

/// One call's transaction code in each Android release that is known (SDK levels; AOSP
/// frameworks/base, the order of the methods in the interface's .aidl file), and the code to send
/// at any other level.
struct TransactionCodes
{
    quint32 sdk27;
    quint32 sdk28;
    quint32 sdk29;
    quint32 other;

    /// The code for the runtime's level (DaemonConfig::androidSdkVersion()). A level that is not
    /// known logs one critical line and gives `other`.
    quint32 forRuntime() const;
};
