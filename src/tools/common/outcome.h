#pragma once

#include "tools/common/exitstatus.h"

#include <QString>

/// What became of something a tool had to do.
struct Outcome
{
    ExitStatus status = ExitStatus::Done;
    /// For the user: one line that says what is wrong and what to do next. Empty when done.
    QString sentence;

    bool isDone() const { return status == ExitStatus::Done; }
};

bool operator==(const Outcome &left, const Outcome &right);

/// Of several things, the first failure decides how the program ends.
ExitStatus firstFailure(ExitStatus before, ExitStatus now);

/// Writes the sentence, if there is one, to standard error behind the program's name, and returns
/// the number to end the program with. It is one line whatever the names in it hold, and in UTF-8
/// in any locale, as all that the tools print.
int reportOutcome(const Outcome &outcome);
