#include "platform/binder/driver.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace Binder {

namespace {

class KernelDriver : public Driver
{
public:
    explicit KernelDriver(int descriptor)
        : m_descriptor(descriptor)
    {
    }

    ~KernelDriver() override
    {
        if (m_mapping != MAP_FAILED)
            ::munmap(m_mapping, m_mappingSize);
        ::close(m_descriptor);
    }

    int control(unsigned long request, void *argument) override
    {
        return ::ioctl(m_descriptor, request, argument) < 0 ? -errno : 0;
    }

    const void *map(std::size_t size) override
    {
        m_mapping = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_NORESERVE, m_descriptor, 0);
        m_mappingSize = size;
        return m_mapping == MAP_FAILED ? nullptr : m_mapping;
    }

    int descriptor() const override { return m_descriptor; }

private:
    int m_descriptor;
    void *m_mapping = MAP_FAILED;
    std::size_t m_mappingSize = 0;
};

} // namespace

std::unique_ptr<Driver> Driver::open(const char *device)
{
    // Not blocking, because some work that wakes the reader yields nothing to read, and a read
    // would then sleep where the event loop should run.
    const int descriptor = ::open(device, O_RDWR | O_CLOEXEC | O_NONBLOCK);
    return descriptor < 0 ? nullptr : std::make_unique<KernelDriver>(descriptor);
}

} // namespace Binder
