#pragma once

#include "fuzz/input.h"
#include "platform/binder/driver.h"
#include "platform/binder/types.h"

#include <QByteArray>

#include <map>
#include <memory>
#include <vector>

struct binder_transaction_data;
struct binder_write_read;

/// A binder driver that says what the fuzzer made up. It keeps to what the kernel itself sees to,
/// whatever the runtime does: addresses are good, descriptors are new, a call or an answer ends its
/// read. All else may come at any time, in any order, any number of times.
///
/// The process under test has to give back what it got: buffers and answers once, confirmations for
/// what asks for one. What it does wrong ends the process.
class ScriptedDriver : public Binder::Driver
{
public:
    /// What the driver and the run share.
    struct Script
    {
        explicit Script(Input decisions)
            : input(decisions)
        {
        }

        Input input;
        std::vector<quint64> objects; ///< those of the process that can be called
        bool isOver = false;          ///< nothing is made up any more; calls find nobody
        bool isOpen = false;          ///< whether there is an open file
    };

    /// What open() reads from; null: there is no device.
    static Script *script;

    ScriptedDriver();
    ~ScriptedDriver() override;

    int control(unsigned long request, void *argument) override;
    const void *map(std::size_t) override { return &m_mapping; }
    int descriptor() const override { return m_descriptor; }

private:
    struct Buffer
    {
        std::vector<char> bytes;
        std::vector<quint64> positions;
    };

    int writeRead(binder_write_read *exchange);
    std::size_t write(const char *bytes, std::size_t size, bool stopsEarly);
    void execute(quint32 command, const char *payload);
    int read(QByteArray *returns);
    bool produce(QByteArray *returns);
    void produceCall(QByteArray *returns);
    binder_transaction_data makeMessage();
    static void translateObjects(Buffer *buffer);
    void freeBuffer(quint64 address);
    quint64 deathCookie();

    char m_mapping = 0;
    int m_descriptor;
    bool m_lost = false;
    bool m_saidNothing = false;                           // by the last read after the end
    std::map<quint64, std::unique_ptr<Buffer>> m_buffers; // by address
    std::map<quint32, int> m_owed;                        // by command
    std::map<Binder::Handle, int> m_references;           // strong ones
    std::map<Binder::Handle, quint64> m_deathCookies;     // as they were asked for
};
