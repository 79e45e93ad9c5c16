#pragma once

/// What whoever manages the device lets its user do.
class DevicePolicy
{
public:
    virtual ~DevicePolicy() = default;
    DevicePolicy(const DevicePolicy &) = delete;
    DevicePolicy &operator=(const DevicePolicy &) = delete;

    /// Policy key 6: whether apps may be installed and removed. Asked anew on every call, which
    /// may block. When the answer cannot be had, a warning is logged and it is false.
    virtual bool mayInstallApps() = 0;

protected:
    DevicePolicy() = default;
};
