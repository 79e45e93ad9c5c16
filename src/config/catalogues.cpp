#include "config/catalogues.h"

#include <QCoreApplication>
#include <QLocale>

Catalogues::Catalogues()
{
    const QString directory = QStringLiteral("/usr/share/translations");
    m_engineeringEnglish.load(QStringLiteral("bramd_eng_en"), directory);
    QCoreApplication::installTranslator(&m_engineeringEnglish);
    m_userLanguage.load(QLocale::system(), QStringLiteral("bramd"), QStringLiteral("-"), directory);
    QCoreApplication::installTranslator(&m_userLanguage);
}
