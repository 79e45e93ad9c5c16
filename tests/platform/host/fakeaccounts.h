#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QThread>

/// AccountsService with one user. It serves from a thread of its own, because whoever asks it in
/// a test blocks the test's thread.
class FakeAccounts : public QDBusVirtualObject
{
    Q_OBJECT

public:
    /// How it answers one of the two questions: with a value, with an error, or not at all.
    struct Answer
    {
        QVariant value;
        QString error;
        bool silent = false;
    };

    FakeAccounts(Answer user, Answer allowUserInstallation);
    ~FakeAccounts() override;

    /// Takes the service's name on the bus at `address`.
    bool serve(const QString &address);

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;
    QString introspect(const QString &path) const override;

    /// The questions in order: path, member and arguments.
    QStringList questions() const;

private:
    const Answer m_user;
    const Answer m_allowUserInstallation;
    QStringList m_questions;
    QThread m_thread;
};
