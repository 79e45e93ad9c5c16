#pragma once

#include "tools/ctl/invocation.h"

#include <QString>
#include <QStringList>

struct Command;

/// The words after the command's name, as the command's row has them.
struct ParsedCommandLine
{
    Invocation invocation;
    QString error;          ///< a sentence; empty when the words fit the row
    bool wantsHelp = false; ///< the rest says nothing then
};

/// Options may stand anywhere before "--", and have their value behind "=" or as the next word.
ParsedCommandLine parseCommandLine(const Command &command, const QStringList &words);
