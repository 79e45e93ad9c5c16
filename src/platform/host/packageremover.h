#pragma once

class QString;

/// Removes packages of the host's own package system, through PackageKit.
class PackageRemover
{
public:
    /// Asks PackageKit to remove the installed package of this name. Returns at once; failures
    /// are logged at debug level when PackageKit reports them.
    void remove(const QString &package) const;
};
