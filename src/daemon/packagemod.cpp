#include "daemon/packagemod.h"

bool operator==(const PackageMod &left, const PackageMod &right)
{
    return left.path == right.path && left.install == right.install && left.silent == right.silent;
}

QDebug operator<<(QDebug debug, const PackageMod &mod)
{
    const QDebugStateSaver saver(debug);
    debug.nospace() << "PackageMod(" << mod.path << (mod.install ? ", install" : ", uninstall")
                    << (mod.silent ? ", silent)" : ")");
    return debug;
}
