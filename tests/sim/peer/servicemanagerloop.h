#pragma once

#include "platform/binder/driver.h"

#include <QByteArray>
#include <QVector>

#include <linux/android/binder.h>
#include <map>
#include <memory>
#include <string>

/// A service manager that does what the library needs of one, on the bare driver: addService,
/// checkService, ping; requests without a second word before their descriptor. It forgets nothing
/// and refuses nothing.
class ServiceManagerLoop
{
public:
    explicit ServiceManagerLoop(std::unique_ptr<Binder::Driver> driver);

    /// Becomes the context manager. False when it cannot.
    bool begin();

    /// Serves for ever; returns when the device fails.
    void run();

private:
    bool exchange(const QByteArray &commands, QByteArray *returns);
    void handle(const QByteArray &returns);
    void serve(const binder_transaction_data &call);
    QByteArray reply(const binder_transaction_data &call);

    std::unique_ptr<Binder::Driver> m_driver;
    std::map<std::u16string, quint32> m_handles; // by name
    QByteArray m_commands;
    QByteArray m_replyData;
    quint64 m_replyOffset = 0;
};
