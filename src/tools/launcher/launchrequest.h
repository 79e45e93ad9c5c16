#pragma once

#include "tools/common/outcome.h"

#include <QString>
#include <QStringList>

/// What a desktop entry's Exec line asks for.
struct LaunchRequest
{
    QString package;
    QString className;
    QStringList opened; ///< paths and URLs, as they were given; none: just start the activity
};

/// A command line that was read, or what is wrong with it; the request is empty then.
struct LaunchCommand
{
    Outcome outcome;
    LaunchRequest request;
};

/// Reads the arguments behind the program's name. They have one of the two forms that Exec lines
/// have:
///
///     PACKAGE.apk PACKAGE/CLASS
///     -d [FILE-OR-URL...] PACKAGE.apk PACKAGE/CLASS
///
/// The last two are taken first, because what a desktop puts between them and "-d" may be anything,
/// options included, and as many as it likes.
LaunchCommand readLaunchCommand(QStringList arguments);
