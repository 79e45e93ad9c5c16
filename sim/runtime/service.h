#pragma once

#include "runtime/answers.h"
#include "runtime/binderloop.h"
#include "runtime/faults.h"
#include "runtime/recorder.h"
#include "runtime/request.h"

#include <QString>
#include <QVector>

#include <functional>

namespace SimRuntime {

/// A method's transaction code at each SDK level; other levels have the codes of level 29. Code 0
/// says that the method does not exist at that level.
struct TransactionCodes
{
    quint32 sdk27;
    quint32 sdk28;
    quint32 sdk29;

    quint32 at(int sdk) const { return sdk == 27 ? sdk27 : sdk == 28 ? sdk28 : sdk29; }
};

/// A code that is the same at every level.
constexpr TransactionCodes everyLevel(quint32 code)
{
    return {code, code, code};
}

/// What all services of one boot share. Not owned.
struct ServiceEnvironment
{
    int sdk = 0;
    BinderLoop *loop = nullptr;
    Recorder *recorder = nullptr;
    Faults *faults = nullptr;
};

/// A named service of the runtime: a table of methods, each with its arguments and the function
/// that carries it out. Standard transactions, interface tokens, decoding, recording and faults
/// on demand are the same for all and done here.
class Service : public BinderObject
{
public:
    std::optional<Answer> transact(const IncomingCall &call) override;

    const QString &name() const { return m_name; }

protected:
    struct Method
    {
        const char *name;
        TransactionCodes codes;
        QVector<Field> fields;
        std::function<Answer(const Request &)> serve;
    };

    Service(const ServiceEnvironment &environment, const QString &name, const QString &descriptor);

    void add(Method method) { m_methods.append(std::move(method)); }

    /// Java services answer with these; native ones override what they do differently.
    virtual Answer answerToPing() const;
    virtual Answer answerToWrongToken() const;
    virtual Answer answerToUnknownCode() const;
    virtual Answer answerToBadRequest() const;

    const ServiceEnvironment &environment() const { return m_environment; }

    /// The call being served.
    const IncomingCall &currentCall() const { return *m_currentCall; }

private:
    std::optional<Answer> answerStandard(const IncomingCall &call) const;
    std::function<Answer()> prepare(const IncomingCall &call);
    std::optional<Answer> misbehave(const Fault &fault, const IncomingCall &call,
                                    const std::function<Answer()> &serve);
    Parcel withSurplus(const Fault &fault, const Parcel &parcel);

    ServiceEnvironment m_environment;
    QString m_name;
    QString m_descriptor;
    QVector<Method> m_methods;
    const IncomingCall *m_currentCall = nullptr;
};

} // namespace SimRuntime
