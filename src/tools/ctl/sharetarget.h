#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

/// One activity that takes what the host shares.
struct ShareTarget
{
    QString packageName;
    QString className;
    QString label;
    QString caption;
    QString iconPath;
    QStringList mimeTypes; ///< "image/*" and "*/*" stand for all that begin so
    bool takesSeveral = false;

    QString component() const { return packageName + QLatin1Char('/') + className; }

    bool takes(const QString &mimeType) const;
};

/// The sharing registry that the daemon keeps.
struct RegisteredTargets
{
    enum class State {
        Filled,
        Empty,      ///< as the daemon leaves it until the runtime has announced its apps
        Missing,    ///< the daemon has never run
        Unreadable, ///< for the user of this program
        Damaged
    };

    State state = State::Missing;
    QVector<ShareTarget> targets; ///< ordered by package and class

    /// Members that are no targets are left out.
    static RegisteredTargets parse(const QByteArray &content);
    static RegisteredTargets read();
};
