#pragma once

#include "tools/common/outcome.h"

struct Invocation;
struct ShareItems;

/// What "bramctl share" is to share, by its arguments and options.
namespace ShareArguments {

/// Whether a word that is no file was meant to be one: it is written as a path is, or it is all
/// that is shared and has a "/" or a file's ending.
bool looksLikeFile(const QString &word, bool isAlone);

/// Fills `items`, or tells what is wrong with the arguments. Relative paths are looked up in the
/// current directory.
Outcome read(const Invocation &invocation, ShareItems &items);

} // namespace ShareArguments
