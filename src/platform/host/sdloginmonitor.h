#pragma once

#include "platform/host/loginmonitor.h"

#include <memory>
#include <systemd/sd-login.h>

/// The login monitor of libsystemd, on the category "seat".
class SdLoginMonitor final : public LoginMonitor
{
public:
    bool open() override;
    int descriptor() const override;
    int events() const override;
    quint64 timeout() const override;
    void flush() override;
    std::optional<uid_t> activeUser() const override;
    int poll(int descriptor, short events, int timeoutMs) override;
    quint64 now() const override;

private:
    struct Unref
    {
        void operator()(sd_login_monitor *monitor) const { sd_login_monitor_unref(monitor); }
    };

    std::unique_ptr<sd_login_monitor, Unref> m_monitor;
};
