#include "interface/appsizeinfo.h"

bool operator==(const AppSizeInfo &left, const AppSizeInfo &right)
{
    return left.codeSize == right.codeSize && left.dataSize == right.dataSize &&
           left.cacheSize == right.cacheSize;
}

QDBusArgument &operator<<(QDBusArgument &argument, const AppSizeInfo &info)
{
    argument.beginStructure();
    argument << info.codeSize << info.dataSize << info.cacheSize;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, AppSizeInfo &info)
{
    argument.beginStructure();
    argument >> info.codeSize >> info.dataSize >> info.cacheSize;
    argument.endStructure();
    return argument;
}
