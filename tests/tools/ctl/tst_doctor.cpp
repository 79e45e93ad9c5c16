#include "support/testcase.h"
#include "tools/ctl/doctor.h"

#include <QtTest>

namespace {

const QByteArray Png = QByteArrayLiteral("\x89PNG\r\n\x1a\nIHDR");

AppEntry entry(const QString &name, bool isHandler)
{
    AppEntry made;
    made.path = QStringLiteral("/usr/share/applications/%1.desktop").arg(name);
    made.packageName = QStringLiteral("a.b");
    made.isHandler = isHandler;
    return made;
}

HostState::File icon(const QString &name, const QByteArray &content = Png)
{
    return {QStringLiteral("/var/lib/bramd/%1.png").arg(name), RegularFile::State::Read, content};
}

HostState::File settings(const QString &name)
{
    HostState::File file;
    file.path = QStringLiteral("/usr/share/corvo-settings/entries/%1.json").arg(name);
    return file;
}

/// A host on which an app has a launcher and takes what is shared, and all is well.
HostState soundHost()
{
    HostState host;
    host.unitState = QStringLiteral("active");
    host.sessionBusPath = QStringLiteral("/run/user/1/dbus/user_bus_socket");
    host.entries = {entry(QStringLiteral("bramd_launcher_a"), false),
                    entry(QStringLiteral("bramd_handler_a"), true)};
    host.icons = {icon(QStringLiteral("bramd_launcher_a")),
                  icon(QStringLiteral("bramd_handler_a"))};
    host.settingsEntries = {settings(QStringLiteral("bramd_launcher_a"))};
    host.targets.state = RegisteredTargets::State::Filled;
    ShareTarget target;
    target.packageName = QStringLiteral("a.b");
    target.className = QStringLiteral("a.b.C");
    target.iconPath = host.icons.last().path;
    host.targets.targets = {target};
    return host;
}

/// The only finding; it has advice, too.
QString finding(const HostState &host)
{
    const QVector<Finding> found = Doctor::examine(host);
    if (found.size() != 1)
        return QStringLiteral("%1 findings").arg(found.size());
    return found.first().advice.isEmpty() ? QStringLiteral("no advice") : found.first().what;
}

} // namespace

class DoctorTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void findsNothingOnASoundHost();
    void findsServicesThatAreAway();
    void findsAUnitThatCannotBeStarted();
    void findsAFailedUnitButNoStoppedOne();
    void findsWhatEntriesLack();
    void findsWhatBelongsToNobody();
    void findsIconsThatAreNone();
    void findsWhatTheUserCannotRead();
    void findsWhatIsNoFile();
    void missesNothingWhereItCannotLook();
    void judgesTheRegistry();
};

void DoctorTest::findsNothingOnASoundHost()
{
    QCOMPARE(Doctor::examine(soundHost()), QVector<Finding>());
}

void DoctorTest::findsServicesThatAreAway()
{
    HostState host = soundHost();
    host.systemBusReachable = false;
    host.daemonKnown = false; // follows, and is not told
    QCOMPARE(finding(host), QStringLiteral("The system bus cannot be reached."));

    host = soundHost();
    host.daemonKnown = false;
    QVERIFY(finding(host).startsWith(QLatin1String("bramd does not run")));
    host = soundHost();
    host.daemonAnswer.outcome.status = ExitStatus::NotConfirmed;
    QCOMPARE(finding(host), QStringLiteral("bramd runs, but does not answer."));
    host = soundHost();
    host.runtimeImageThere = false;
    QVERIFY(finding(host).contains(QLatin1String("/opt/umbra/system.img")));
    host = soundHost();
    host.callsPermitted = false;
    QCOMPARE(finding(host), QStringLiteral("You may not call bramd."));
    host = soundHost();
    host.sessionBusReachable = false;
    QVERIFY(finding(host).contains(host.sessionBusPath));
}

void DoctorTest::findsAUnitThatCannotBeStarted()
{
    HostState host = soundHost();
    host.unitComplaint = QStringLiteral("Its unit is masked. Unmask it.");
    host.unitUnstartable = true;
    QCOMPARE(Doctor::examine(host),
             QVector<Finding>({{QStringLiteral("The Android runtime's unit cannot be started."),
                                QStringLiteral("Its unit is masked. Unmask it.")}}));
    host.unitUnstartable = false;
    QCOMPARE(finding(host), QStringLiteral("The state of the Android runtime is not known."));
}

void DoctorTest::findsAFailedUnitButNoStoppedOne()
{
    HostState host = soundHost();
    host.unitState = QStringLiteral("inactive");
    QCOMPARE(Doctor::examine(host), QVector<Finding>());
    host.unitState = QStringLiteral("failed");
    QVERIFY(finding(host).startsWith(QLatin1String("The Android runtime has failed")));
}

void DoctorTest::findsWhatEntriesLack()
{
    HostState host = soundHost();
    host.icons.removeLast();
    QCOMPARE(finding(host), QStringLiteral("The desktop entry /usr/share/applications/"
                                           "bramd_handler_a.desktop has no icon."));
    host = soundHost();
    host.settingsEntries.clear();
    QCOMPARE(finding(host), QStringLiteral("The app a.b has no page in the settings."));
    host = soundHost();
    host.entries.first().packageName.clear();
    QVERIFY(finding(host).endsWith(QLatin1String("names no app.")));
}

void DoctorTest::findsWhatBelongsToNobody()
{
    HostState host = soundHost();
    host.icons.append(icon(QStringLiteral("bramd_launcher_gone")));
    QCOMPARE(finding(host), QStringLiteral("The icon /var/lib/bramd/bramd_launcher_gone.png "
                                           "belongs to no desktop entry."));
    host = soundHost();
    host.settingsEntries.append(settings(QStringLiteral("bramd_launcher_gone")));
    QVERIFY(finding(host).endsWith(QLatin1String("bramd_launcher_gone.json belongs to no app.")));
    host = soundHost();
    host.targets.targets.first().iconPath = QStringLiteral("/var/lib/bramd/bramd_handler_gone.png");
    QCOMPARE(finding(host),
             QStringLiteral("a.b/a.b.C is offered for sharing, but has no desktop entry."));
}

void DoctorTest::findsIconsThatAreNone()
{
    for (const QByteArray &content : {QByteArray(), QByteArray("GIF89a"), Png.left(7)}) {
        HostState host = soundHost();
        host.icons.first().content = content;
        QCOMPARE(finding(host),
                 QStringLiteral("The icon /var/lib/bramd/bramd_launcher_a.png is no PNG file."));
    }
}

void DoctorTest::findsWhatTheUserCannotRead()
{
    HostState host = soundHost();
    host.entries.first().state = RegularFile::State::Unreadable;
    QVERIFY(finding(host).startsWith(QLatin1String("You cannot read the desktop entry")));
    QVERIFY(Doctor::examine(host).first().advice.contains(QLatin1String("chmod a+r ")));
    host = soundHost();
    host.icons.first().state = RegularFile::State::Unreadable;
    QVERIFY(finding(host).startsWith(QLatin1String("You cannot read the icon")));
    host = soundHost();
    host.settingsEntries.first().state = RegularFile::State::Unreadable;
    QVERIFY(finding(host).startsWith(QLatin1String("You cannot read the settings entry")));
    host = soundHost();
    host.targets.state = RegisteredTargets::State::Unreadable;
    QVERIFY(finding(host).startsWith(QLatin1String("You cannot read the sharing registry")));
}

void DoctorTest::findsWhatIsNoFile()
{
    HostState host = soundHost();
    host.entries.first().state = RegularFile::State::Unusable;
    QCOMPARE(
        finding(host),
        QStringLiteral("The desktop entry %1 is no regular file.").arg(host.entries.first().path));
    QVERIFY(Doctor::examine(host).first().advice.contains(QLatin1String("remove it")));
    host = soundHost();
    host.icons.first().state = RegularFile::State::Unusable;
    QVERIFY(finding(host).endsWith(QLatin1String("is no regular file.")));
    host = soundHost();
    host.settingsEntries.first().state = RegularFile::State::Unusable;
    QVERIFY(finding(host).endsWith(QLatin1String("is no regular file.")));
}

void DoctorTest::missesNothingWhereItCannotLook()
{
    HostState host = soundHost();
    host.icons.clear();
    host.targets.state = RegisteredTargets::State::Unreadable;
    host.unreadableDirectories = QStringList(QStringLiteral("/var/lib/bramd/"));
    QCOMPARE(finding(host), QStringLiteral("You cannot read the directory /var/lib/bramd/."));

    host = soundHost();
    host.settingsEntries.clear();
    host.unreadableDirectories = QStringList(QStringLiteral("/usr/share/corvo-settings/entries/"));
    QVERIFY(finding(host).startsWith(QLatin1String("You cannot read the directory")));

    host = soundHost();
    host.entries.clear();
    host.unreadableDirectories = QStringList(QStringLiteral("/usr/share/applications/"));
    QVERIFY(finding(host).startsWith(QLatin1String("You cannot read the directory")));
}

void DoctorTest::judgesTheRegistry()
{
    HostState host = soundHost();
    host.targets.state = RegisteredTargets::State::Empty;
    QVERIFY(finding(host).startsWith(QLatin1String("No app is offered for sharing")));
    host.entries.last().mimeTypes = QStringList(QStringLiteral("a/b")); // opens, takes no shares
    QCOMPARE(Doctor::examine(host), QVector<Finding>());
    host.targets.state = RegisteredTargets::State::Missing;
    QVERIFY(finding(host).startsWith(QLatin1String("There is no sharing registry")));
    host.targets.state = RegisteredTargets::State::Damaged;
    QVERIFY(finding(host).endsWith(QLatin1String("is damaged.")));
}

QTEST_GUILESS_MAIN(DoctorTest)
#include "tst_doctor.moc"
