// usage: inireader FILE...
// What Qt's own reader of INI files finds in each: one JSON object of {key: [item, ...]}, with the
// group in front of the key, by the file's name.

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSettings>

namespace {

QJsonObject read(const QString &path)
{
    QSettings settings(path, QSettings::IniFormat);
    settings.setIniCodec("UTF-8");
    QJsonObject found;
    const QStringList keys = settings.allKeys();
    for (const QString &key : keys)
        found.insert(key, QJsonArray::fromStringList(settings.value(key).toStringList()));
    return found;
}

} // namespace

int main(int count, char **arguments)
{
    QJsonObject files;
    for (int i = 1; i < count; ++i) {
        const QString path = QFile::decodeName(arguments[i]);
        files.insert(path, read(path));
    }
    QFile output;
    const QByteArray text = QJsonDocument(files).toJson();
    return output.open(stdout, QIODevice::WriteOnly) && output.write(text) == text.size() ? 0 : 1;
}
