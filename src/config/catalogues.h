#pragma once

#include <QTranslator>

/// The texts that users are shown, looked up by their ids, for as long as the object lives: in the
/// language of the locale, and in English where that has none. Needs the application object.
class Catalogues
{
public:
    Catalogues();

private:
    QTranslator m_engineeringEnglish;
    QTranslator m_userLanguage;
};
