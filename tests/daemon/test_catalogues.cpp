#include "support/testcase.h"

#include <QTranslator>
#include <QtTest>

class TestCatalogues : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void every_text_has_a_translation_data();
    void every_text_has_a_translation();
    void the_notice_about_starting_names_the_app_data();
    void the_notice_about_starting_names_the_app();
};

namespace {

void addCatalogueRows()
{
    QTest::addColumn<QString>("catalogue");
    for (const char *name : {"bramd_eng_en", "bramd-de", "bramd-es", "bramd-fi", "bramd-fr"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

constexpr const char *textIds[] = {
    "bramd-ap-name",
    "bramd-install-success",
    "bramd-install-failed",
    "bramd-uninstall-success",
    "bramd-uninstall-failed",
    "bramd-app_installation_disallowed",
    "bramd-app_uninstallation_disallowed",
    "bramd-launch_umbra_to_start_android_app",
    "Aborted",
    "bramd-install-fail-incompat",
    "bramd-install-fail-conflict",
    "bramd-install-fail-invalid",
    "bramd-install-fail-storage",
    "bramd-install-fail-other",
    "bramd-installing",
    "bramd-install-refused",
    "bramd-install-no-runtime",
    "bramd-install-unavailable",
};

} // namespace

void TestCatalogues::every_text_has_a_translation_data()
{
    addCatalogueRows();
}

void TestCatalogues::every_text_has_a_translation()
{
    QFETCH(QString, catalogue);
    QTranslator translator;
    QVERIFY(translator.load(catalogue, QStringLiteral(CATALOGUE_DIRECTORY)));

    QStringList missing;
    for (const char *id : textIds) {
        if (translator.translate("", id).isEmpty())
            missing.append(QLatin1String(id));
    }
    QCOMPARE(missing, QStringList());
}

void TestCatalogues::the_notice_about_starting_names_the_app_data()
{
    addCatalogueRows();
}

void TestCatalogues::the_notice_about_starting_names_the_app()
{
    QFETCH(QString, catalogue);
    QTranslator translator;
    QVERIFY(translator.load(catalogue, QStringLiteral(CATALOGUE_DIRECTORY)));

    const QString text = translator.translate("", "bramd-launch_umbra_to_start_android_app");

    QCOMPARE(text.count(QStringLiteral("%1")), 1);
}

QTEST_GUILESS_MAIN(TestCatalogues)
#include "test_catalogues.moc"
