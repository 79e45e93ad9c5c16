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

/// What all kinds of words are made from.
struct CompletionSources
{
    const QVector<Command> &commands;
    QVector<App> apps;
    QVector<ShareTarget> targets;
    QStringList hiddenPackages;
};

namespace Completion {

/// `words` are those after the program's name, up to the cursor; the last one is being written and
/// may be empty. A value behind "=" is part of its option's word, in what is suggested as well.
Suggestions suggest(const CompletionSources &sources, const QStringList &words);

/// As the completion scripts read them: a line per word, its meaning behind a tab, and a line
/// ":files".
QStringList lines(const Suggestions &suggestions);

} // namespace Completion
