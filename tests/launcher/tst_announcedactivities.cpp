#include "launcher/announcedactivities.h"
#include "launcher/launcherhost.h"
#include "support/testcase.h"

#include <QtTest>

using Result = AnnouncedActivities::Result;

namespace {

ApkLauncher sized(const QString &className, qint64 bytes)
{
    ApkLauncher announced = LauncherHost::launcher(QStringLiteral("a.b"), className);
    announced.icon = QByteArray(static_cast<int>(bytes), 'i');
    return announced;
}

} // namespace

class AnnouncedActivitiesTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void listsTheDesktopFilesOfAll();
    void replacesAnActivity();
    void countsActivitiesUpToALimit();
    void countsBytesUpToALimit();
    void takesFewerTextsThanIcons();
    void countsTheMostThatAnActivityHad();
    void forgetsThePackage();
    void keepsTheNameOfADroppedActivityUntilThePurge();
};

void AnnouncedActivitiesTest::listsTheDesktopFilesOfAll()
{
    AnnouncedActivities activities;
    QCOMPARE(activities.add(LauncherHost::launcher()), Result::Added);
    QCOMPARE(activities.add(LauncherHost::handler()), Result::Added);

    QCOMPARE(activities.desktopFiles(),
             QSet<QString>({LauncherHost::entryPath("bramd_launcher_a_b-a_b_Main"),
                            LauncherHost::entryPath("bramd_handler_a_b-a_b_Open")}));
}

void AnnouncedActivitiesTest::replacesAnActivity()
{
    AnnouncedActivities activities;
    ApkLauncher announced = LauncherHost::launcher();
    activities.add(announced);
    announced.mimeTypes = QStringList(QStringLiteral("a/b"));
    activities.add(announced);

    QCOMPARE(activities.desktopFiles(),
             QSet<QString>({LauncherHost::entryPath("bramd_handler_a_b-a_b_Main")}));
}

void AnnouncedActivitiesTest::countsActivitiesUpToALimit()
{
    AnnouncedActivities activities;
    for (int number = 0; number < AnnouncedActivities::MaxActivities; ++number) {
        const ApkLauncher announced = sized(QString::number(number), 0);
        QCOMPARE(activities.add(announced), Result::Added);
        activities.drop(announced); // its files are still there
    }
    QCOMPARE(activities.add(sized(QStringLiteral("a.More"), 0)), Result::Full);
    QCOMPARE(activities.add(sized(QStringLiteral("7"), 0)), Result::Added);

    activities.purge();
    QCOMPARE(activities.add(sized(QStringLiteral("a.More"), 0)), Result::Added);
}

void AnnouncedActivitiesTest::countsBytesUpToALimit()
{
    AnnouncedActivities activities;
    const ApkLauncher most = sized(QStringLiteral("a.Most"), AnnouncedActivities::MaxBytes - 1000);
    QCOMPARE(activities.add(most), Result::Added);
    QCOMPARE(activities.add(most), Result::Added); // is not counted again
    ApkLauncher announced = sized(QStringLiteral("a.More"), 1000);
    QCOMPARE(activities.add(announced), Result::Full);
    QCOMPARE(activities.desktopFiles().size(), 1);

    announced.icon.clear();
    for (QString *text : {&announced.label, &announced.caption, &announced.packageVersion}) {
        *text = QString(500, QLatin1Char('a'));
        QCOMPARE(activities.add(announced), Result::Full);
        text->clear();
    }
    for (QStringList *types : {&announced.mimeTypes, &announced.shareMimeTypes}) {
        *types = QStringList(QString(500, QLatin1Char('a')));
        QCOMPARE(activities.add(announced), Result::Full);
        types->clear();
    }
    QCOMPARE(activities.add(announced), Result::Added);
}

void AnnouncedActivitiesTest::takesFewerTextsThanIcons()
{
    AnnouncedActivities activities;
    ApkLauncher announced = sized(QString(), 0);
    announced.label = QString(1024 * 1024 / int{sizeof(QChar)}, QLatin1Char('a'));
    int count = 0;
    do
        announced.className = QString::number(++count);
    while (activities.add(announced) == Result::Added);

    // 32 MiB, of which a little goes to the names
    QCOMPARE(count, 32);
}

void AnnouncedActivitiesTest::countsTheMostThatAnActivityHad()
{
    AnnouncedActivities activities;
    activities.add(sized(QStringLiteral("a.Most"), AnnouncedActivities::MaxBytes - 1000));
    activities.add(sized(QStringLiteral("a.Most"), 0));

    // files of its former kind may still be there
    QCOMPARE(activities.add(sized(QStringLiteral("a.More"), 1000)), Result::Full);
}

void AnnouncedActivitiesTest::forgetsThePackage()
{
    AnnouncedActivities activities;
    activities.add(sized(QStringLiteral("a.Most"), AnnouncedActivities::MaxBytes - 1000));
    activities.removePackage(QStringLiteral("a"));
    QCOMPARE(activities.desktopFiles().size(), 1);

    activities.removePackage(QStringLiteral("a.b"));
    QVERIFY(activities.desktopFiles().isEmpty());
    QCOMPARE(activities.add(sized(QStringLiteral("a.More"), 1000)), Result::Added);
}

void AnnouncedActivitiesTest::keepsTheNameOfADroppedActivityUntilThePurge()
{
    AnnouncedActivities activities;
    const ApkLauncher dropped = LauncherHost::launcher(QStringLiteral("a._b"), QStringLiteral("C"));
    const ApkLauncher other = LauncherHost::launcher(QStringLiteral("a_.b"), QStringLiteral("C"));
    activities.drop(dropped); // of one that is not known nothing comes
    activities.add(dropped);
    activities.drop(dropped);

    QVERIFY(activities.desktopFiles().isEmpty());
    QCOMPARE(activities.add(other), Result::BelongsToOther);

    activities.purge();
    QCOMPARE(activities.add(other), Result::Added);
    activities.purge();
    QCOMPARE(activities.desktopFiles().size(), 1);
}

QTEST_GUILESS_MAIN(AnnouncedActivitiesTest)
#include "tst_announcedactivities.moc"
