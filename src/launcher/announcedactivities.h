#pragma once

#include <QHash>
#include <QPair>
#include <QSet>
#include <QString>

struct ApkLauncher;

/// Which activities the runtime has announced, and where their desktop entries are: names only.
///
/// What a broken or hostile runtime announces stays on the host's disk until it is announced no
/// more, so the list has two limits that no honest phone comes near: 300 apps have some 2,000
/// activities and 50 MB of icons. What does not fit has no files.
class AnnouncedActivities
{
public:
    static constexpr int MaxActivities = 10000;
    static constexpr qint64 MaxBytes = qint64(512) * 1024 * 1024; ///< of icons; of texts less

    enum class Result {
        Added,
        Full,
        BelongsToOther ///< the desktop entry is that of another package's activity
    };

    /// Adds an activity, or replaces what was known of it. Different names can have the same
    /// desktop entry ("a._b" and "a_.b"); the package that came first keeps it.
    Result add(const ApkLauncher &launcher);

    /// The activity has no entry any more that is to be kept. It counts until purge(), because its
    /// files are there until then.
    void drop(const ApkLauncher &launcher);

    /// The same for all of them.
    void dropAll();

    void removePackage(const QString &packageName);

    /// The desktop entries to be kept.
    QSet<QString> desktopFiles() const;

    /// Forgets what was dropped: its files are gone.
    void purge();

private:
    using Name = QPair<QString, QString>; // package and class

    struct Activity
    {
        QString desktopFile; // empty when dropped
        qint64 bytes = 0;    // the most that it ever had: files of a former kind may be there, too
    };

    template <typename Predicate>
    void removeIf(Predicate matches);

    QHash<Name, Activity> m_activities;
    QHash<QString, QString> m_owners; // the package of each name that files have
    qint64 m_bytes = 0;
};
