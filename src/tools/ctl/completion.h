#pragma once

#include "tools/ctl/appentry.h"
#include "tools/ctl/sharetarget.h"

#include <QString>
#include <QStringList>
#include <QVector>

struct Command;

/// What a shell can offer for the word under the cursor.
struct Suggestions
{
    /// A word and what it means, which may be empty.
    struct Word
    {
        QString text;
        QString meaning;
    };

    QVector<Word> words;
    bool files = false; ///< names of files, too
};

namespace Completion {

/// `words` are those after the program's name, up to the cursor; the last one is being written and
/// may be empty.
Suggestions suggest(const QVector<Command> &commands, const QStringList &words,
                    const QVector<App> &apps, const QVector<ShareTarget> &targets);

/// As the completion scripts read them: a line per word, its meaning behind a tab, and a line
/// ":files".
QStringList lines(const Suggestions &suggestions);

} // namespace Completion
