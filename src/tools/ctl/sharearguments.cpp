#include "tools/ctl/sharearguments.h"

#include "tools/common/hostfile.h"
#include "tools/common/location.h"
#include "tools/ctl/invocation.h"
#include "tools/ctl/shareplan.h"

#include <QDir>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QRegularExpression>

namespace ShareArguments {

namespace {

const QString Text = QStringLiteral("--text");
const QString Title = QStringLiteral("--title");
const QString Type = QStringLiteral("--type");

/// A word that is no file, where a file was meant; `advice` is another way.
Outcome noFile(const QString &word, const QString &advice)
{
    const Location location = locationOf(word, QDir::currentPath());
    const bool isDirectory = location.isFile && QFileInfo(location.address).isDir();
    const QString sentence = isDirectory
                                 ? QStringLiteral("“%1” is a directory: name the files in it. %2")
                                 : QStringLiteral("There is no file “%1”. %2");
    return {ExitStatus::Refused, sentence.arg(word, advice)};
}

/// Words beside files were to be files, too. Those of a text must be none that look like files,
/// lest the name of a file be shared for its content.
Outcome checkWords(const QStringList &words, bool areBesideFiles)
{
    if (areBesideFiles && !words.isEmpty())
        return noFile(words.first(), QStringLiteral("Share files or a text, not both."));
    for (const QString &word : words) {
        if (looksLikeFile(word, words.size() == 1)) {
            return noFile(word, QStringLiteral("Look at its spelling; to share these words as "
                                               "they are, give --text."));
        }
    }
    return {};
}

Outcome checkFiles(const QStringList &files)
{
    for (const QString &file : files) {
        if (!HostFile::isSeenByRuntime(file))
            return HostFile::notSeenByRuntime(file);
    }
    return {};
}

Outcome checkOptions(const Invocation &invocation, bool isText)
{
    if (isText && invocation.has(Type))
        return {ExitStatus::Usage, QStringLiteral("--type counts only for files.")};
    if (!isText && invocation.has(Title))
        return {ExitStatus::Usage, QStringLiteral("--title counts only for a text.")};
    return {};
}

} // namespace

bool looksLikeFile(const QString &word, bool isAlone)
{
    static const QRegularExpression path(QStringLiteral("^(/|\\.\\.?/|~(/|$)|file:)"));
    if (path.match(word).hasMatch())
        return true;
    static const QRegularExpression noName(QStringLiteral("\\s|^[A-Za-z][A-Za-z0-9+.-]+:"));
    if (!isAlone || noName.match(word).hasMatch())
        return false;
    return word.contains(QLatin1Char('/')) || QFileInfo(word).isDir() ||
           !QMimeDatabase().suffixForFileName(word).isEmpty();
}

Outcome read(const Invocation &invocation, ShareItems &items)
{
    QStringList words;
    QStringList types;
    for (const QString &argument : invocation.arguments) {
        const Location location = locationOf(argument, QDir::currentPath());
        if (!invocation.has(Text) && location.isFile && QFileInfo(location.address).isFile()) {
            items.files.append(location.address);
            types.append(mimeTypeOf(location));
        } else {
            words.append(argument);
        }
    }

    Outcome outcome = invocation.has(Text) ? Outcome() : checkWords(words, !items.isText());
    if (outcome.isDone())
        outcome = checkFiles(items.files);
    if (outcome.isDone())
        outcome = checkOptions(invocation, items.isText());
    if (!outcome.isDone())
        return outcome;

    items.mimeType = invocation.has(Type) ? invocation.value(Type) : SharePlan::commonType(types);
    items.text = invocation.arguments.join(QLatin1Char(' '));
    items.title = SharePlan::titleOf(invocation.has(Title) ? invocation.value(Title) : items.text);
    return {};
}

} // namespace ShareArguments
