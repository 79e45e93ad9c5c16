#include "interface/androidversiondata.h"

bool operator==(const AndroidVersionData &left, const AndroidVersionData &right)
{
    return left.sdkVersion == right.sdkVersion && left.release == right.release &&
           left.securityPatch == right.securityPatch;
}

QDBusArgument &operator<<(QDBusArgument &argument, const AndroidVersionData &data)
{
    argument.beginStructure();
    argument << data.sdkVersion << data.release << data.securityPatch;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, AndroidVersionData &data)
{
    argument.beginStructure();
    argument >> data.sdkVersion >> data.release >> data.securityPatch;
    argument.endStructure();
    return argument;
}
