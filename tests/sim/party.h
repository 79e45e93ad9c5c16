#pragma once

#include "sim/commands.h"
#include "sim/partyprocess.h"
#include "sim/returns.h"

#include <QByteArray>
#include <QDataStream>
#include <QStringList>

#include <functional>
#include <sys/types.h>

/// One program that has the device open: a child process that uses the driver step by step as the
/// test says. Since it runs only while the test waits for it, the order of everything is known.
///
/// What should not fail here, as being able to write a correct command, fails the test.
class Party
{
public:
    /// What Android maps: 1 MiB less two pages.
    static constexpr quint64 UsualMapping = 1040384;

    /// Opens and maps the device and enters the loop. A mapping of 0: none.
    explicit Party(const QByteArray &device, quint64 mappingSize = UsualMapping);

    /// A process that has not opened anything yet.
    Party();

    /// Closes the device and ends the process.
    ~Party();
    Party(const Party &) = delete;
    Party &operator=(const Party &) = delete;

    int open(const QByteArray &device); ///< 0 or a negative errno value, as the next two
    int map(quint64 size);
    int control(unsigned long request, QByteArray *argument = nullptr);

    /// Waits until the device has no context manager any more, and becomes it.
    bool becomeContextManager();

    /// Closes the device in order; the process goes on.
    void close();

    /// Ends the process as a crash would.
    void kill();

    pid_t pid() const { return m_pid; }

    /// One BINDER_WRITE_READ.
    Outcome exchange(const Commands &commands, quint64 readSize);

    /// Writes commands, all of which are to be consumed.
    void write(const Commands &commands);

    /// One read, once there is something to be read; fails the test when nothing comes.
    Outcome read();

    /// One read at once, come what may.
    Outcome readNow();

    /// Reads until this return has come. Returns everything that came.
    Outcome readUntil(const char *returnName);

    /// Whether the descriptor polls readable now.
    bool isReadable();

    /// Answers the announcements of own objects among these returns, as a correct program does.
    void answerAnnouncements(const Outcome &outcome);

    /// Waits for a call, frees its message, replies and reads the completion. Returns the call.
    Return serve(const Message &reply = {});

    /// A new file with this content; its descriptor in the process.
    int makeFile(const QByteArray &content);

    /// The file's content, empty when the descriptor is not open in the process.
    QByteArray readFile(int descriptor);

private:
    bool poll(int timeoutMs);
    QByteArray ask(PartyRequest request,
                   const std::function<void(QDataStream &)> &writeArguments = nullptr);

    pid_t m_pid = -1;
    int m_socket = -1;
};
