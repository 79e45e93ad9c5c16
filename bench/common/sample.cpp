#include "common/sample.h"

namespace Sample {

namespace {

/// Different for every app, and as hard to compress as a picture.
QByteArray noise(quint32 seed, int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = seed * 2654435761U + 1;
    for (char &byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24U);
    }
    return bytes;
}

} // namespace

QString packageName(int number)
{
    return QStringLiteral("org.sample.a%1").arg(number, 4, 10, QLatin1Char('0'));
}

QString className(int number)
{
    return packageName(number) + QStringLiteral(".Main");
}

QString label(int number)
{
    return QStringLiteral("Album %1").arg(number, 4, 10, QLatin1Char('0'));
}

QString version()
{
    return QStringLiteral("1.4.2");
}

QByteArray icon(int number)
{
    return "\x89PNG\r\n\x1a\n" + noise(static_cast<quint32>(number), IconBytes - 8);
}

QString fileName(int number)
{
    const QString digits = QStringLiteral("%1").arg(number, 4, 10, QLatin1Char('0'));
    return QStringLiteral("bramd_launcher_org_sample_a%1-org_sample_a%1_Main").arg(digits);
}

QByteArray desktopEntry(int number)
{
    const QByteArray package = packageName(number).toUtf8();
    return "[Desktop Entry]\n"
           "Exec=bramd-launcher " +
           package + ".apk " + package + "/" + className(number).toUtf8() +
           "\n"
           "Icon=/var/lib/bramd/" +
           fileName(number).toUtf8() +
           ".png\n"
           "Name=" +
           label(number).toUtf8() +
           "\n"
           "Type=Application\n"
           "Version=1.0\n"
           "X-Orca-Application-Type=no-invoker\n"
           "X-bramd-apkfile=/home/.android/data/app//" +
           package +
           ".apk\n"
           "X-bramd-packageName=" +
           package + "\n";
}

QByteArray settingsEntry(int number)
{
    return "{\n"
           "    \"entries\": [\n"
           "        {\n"
           "            \"params\": {\n"
           "                \"properties\": {\n"
           "                    \"packageName\": \"" +
           packageName(number).toUtf8() +
           "\",\n"
           "                    \"packageVersion\": \"" +
           version().toUtf8() +
           "\"\n"
           "                },\n"
           "                \"source\": \"/usr/share/corvo-settings/pages/apk-configuration/"
           "apkConfigurationPage.qml\"\n"
           "            },\n"
           "            \"path\": \"applications/" +
           fileName(number).toUtf8() +
           ".desktop\",\n"
           "            \"type\": \"page\"\n"
           "        }\n"
           "    ]\n"
           "}\n";
}

} // namespace Sample
