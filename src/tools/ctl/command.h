#pragma once

#include "tools/common/outcome.h"
#include "tools/ctl/invocation.h"

#include <QString>
#include <QVector>

class Context;

/// What an argument is, for its name in the usage and for its completion.
enum class ArgumentKind { File, Item, Package, Hidden, App, Target, OnOff, CommandName, Word };

/// One argument that stands at its place, such as "PKG".
struct Argument
{
    QString name;
    ArgumentKind kind = ArgumentKind::Word;
    bool isOptional = false;
    bool isRepeated = false; ///< only the last argument of a command
};

/// One option, such as "--to PKG/CLASS".
struct Option
{
    QString name;      ///< with its dashes
    QString valueName; ///< empty for a flag
    ArgumentKind valueKind = ArgumentKind::Word;
    QString help;
    bool isRequired = false;
};

/// Whether a command only answers, or brings something about.
enum class Effect { Acts, Answers };

/// One row of the command table, from which usage, help, completions and the manual's test derive.
struct Command
{
    QString name;
    QVector<Argument> arguments;
    QVector<Option> options;
    QString summary; ///< one line, without a full stop
    QString details; ///< further sentences of "bramctl help COMMAND"; may be empty
    Outcome (*handler)(const Invocation &, Context &) = nullptr;
    Effect effect = Effect::Acts;
};
