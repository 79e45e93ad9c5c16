#pragma once

#include <cstdint>

namespace SimBinder {

/// A request to be told of a node's death, made through one reference (struct binder_ref_death).
struct Death
{
    enum class Stage {
        Waiting,        ///< the node lives
        Due,            ///< queued or delivered, and not yet answered with BC_DEAD_BINDER_DONE
        DueThenCleared, ///< the same, and taken back in the meantime
        Told,           ///< delivered and answered
        Cleared,        ///< taken back; the confirmation is queued
    };

    std::uint64_t cookie = 0;
    Stage stage = Stage::Waiting;
};

} // namespace SimBinder
