#pragma once

#include "platform/binder/driver.h"

#include <QByteArray>

#include <cstdint>
#include <functional>
#include <linux/android/binder.h>
#include <memory>

/// A parcel under construction, for Android releases from 8.1 to 9.
class RawParcel
{
public:
    /// Begins with the token of the interface.
    explicit RawParcel(const char *interface);

    void appendInt32(std::int32_t value);
    void appendString(const QString &text);
    void appendBytes(const QByteArray &bytes);
    void appendLocalObject(std::uint64_t id);

    const QByteArray &data() const { return m_data; }
    const QByteArray &objects() const { return m_objects; }

private:
    QByteArray m_data;
    QByteArray m_objects; // positions of 64 bits
};

/// The binder driver and nothing else: one buffer of commands, one ioctl to exchange them, poll()
/// to wait. Whatever fails ends the program.
class RawBinder
{
public:
    /// Answers a call: its code and its data give the word of the reply.
    using Serve = std::function<std::int32_t(std::uint32_t code, const QByteArray &data)>;

    explicit RawBinder(const char *device);

    int descriptor() const { return m_driver->descriptor(); }

    /// Calls, and waits for the answer. Returns the reply's data; `handle`, if given, gets the
    /// object in it, acquired, and 0 where there is none.
    QByteArray call(std::uint32_t handle, std::uint32_t code, const RawParcel &parcel,
                    std::uint32_t *handleInReply = nullptr);

    /// Registers an object under a name, and looks one up; 0 when there is none.
    void registerName(const QString &name);
    std::uint32_t handleOf(const QString &name);

    /// Serves what has come.
    void serve(const Serve &serve);

    /// Sleeps until something comes.
    void wait();

private:
    std::size_t exchange(std::size_t readSize);
    void flush();
    bool isReadable() const;
    void append(std::uint32_t command, const void *payload, std::size_t size);
    void acknowledge(std::uint32_t code, const char *payload);
    void answer(const binder_transaction_data &transaction, const Serve &serve);

    template <typename Handler>
    void forEachReturn(const Handler &handle);

    template <typename Payload>
    void append(std::uint32_t command, const Payload &payload)
    {
        append(command, &payload, sizeof payload);
    }

    std::unique_ptr<Binder::Driver> m_driver;
    QByteArray m_commands;
    char m_returns[256] = {};
    std::int32_t m_word = 0; // of a reply that has yet to be sent
};
