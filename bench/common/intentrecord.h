#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

/// What an intent holds that opens a document, in Qt's types.
struct IntentRecord
{
    QString action = QStringLiteral("android.intent.action.VIEW");
    QUrl data = QUrl(QStringLiteral("file:///storage/8ff8/Documents/letter%20to%20Anna.pdf"));
    QString type = QStringLiteral("application/pdf");
    int flags = 0x10000000;
    QString package = QStringLiteral("org.example.papertrail");
    QString componentPackage = QStringLiteral("org.example.papertrail");
    QString componentClass = QStringLiteral("org.example.papertrail.ViewDocumentActivity");
    QStringList categories = QStringList(QStringLiteral("android.intent.category.DEFAULT"));
    QVariantMap extras{
        {QStringLiteral("android.intent.extra.TEXT"), QStringLiteral("A letter")},
        {QStringLiteral("android.intent.extra.SUBJECT"), QStringLiteral("To Anna")},
        {QStringLiteral("page"), 3},
    };
};
