#pragma once

#include <cstddef>
#include <memory>

namespace Binder {

/// The one seam of the binder client library: everything it asks of the kernel.
///
/// Which driver a program talks to is decided when it is linked: the product is linked with
/// kerneldriver.cpp (open, ioctl and mmap on the device node), test programs and the simulated
/// phone with an implementation of the same open() that plays the kernel's part in user space.
/// An object is one open file of one device; closing it (destruction) ends every registration,
/// reference and pending call made through it. All calls must come from one thread.
class Driver
{
public:
    /// Opens the device at the path `device`. Null on failure, with the reason in errno.
    static std::unique_ptr<Driver> open(const char *device);

    virtual ~Driver() = default;
    Driver(const Driver &) = delete;
    Driver &operator=(const Driver &) = delete;

    /// One ioctl of linux/android/binder.h. Returns 0, or a negative errno value; for
    /// BINDER_WRITE_READ the consumed counts are valid even when -EAGAIN or -EINTR is returned.
    virtual int control(unsigned long request, void *argument) = 0;

    /// Maps `size` bytes, read-only, into which the driver will place received messages. Called
    /// once. The mapping belongs to the driver object. Null on failure, with the reason in errno.
    virtual const void *map(std::size_t size) = 0;

    /// A descriptor that polls readable (level-triggered) while work waits. Owned by the object.
    virtual int descriptor() const = 0;

protected:
    Driver() = default;
};

} // namespace Binder
