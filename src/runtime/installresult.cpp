#include "runtime/installresult.h"

#include <algorithm>
#include <iterator>

namespace InstallResult {

namespace {

struct Failure
{
    int first; ///< lowest return code of the range
    int last;  ///< highest return code of the range
    // cppcheck-suppress unusedStructMember // it is what is returned
    const char *textId;
};

constexpr char Aborted[] = "Aborted";
constexpr char Incompatible[] = "bramd-install-fail-incompat";
constexpr char Conflict[] = "bramd-install-fail-conflict";
constexpr char Invalid[] = "bramd-install-fail-invalid";
constexpr char Storage[] = "bramd-install-fail-storage";
constexpr char Other[] = "bramd-install-fail-other";

// Codes that stand in no row, unknown ones included, have the text of Other.
constexpr Failure Failures[] = {
    {-115, -115, Aborted},      {-113, -113, Incompatible}, {-112, -112, Conflict},
    {-111, -111, Incompatible}, {-109, -100, Invalid},      {-26, -26, Invalid},
    {-25, -24, Conflict},       {-23, -23, Invalid},        {-22, -21, Aborted},
    {-20, -18, Storage},        {-17, -16, Incompatible},   {-15, -15, Invalid},
    {-14, -14, Incompatible},   {-13, -13, Conflict},       {-12, -12, Incompatible},
    {-11, -11, Invalid},        {-10, -10, Conflict},       {-9, -9, Incompatible},
    {-8, -5, Conflict},         {-4, -4, Storage},          {-3, -2, Invalid},
    {-1, -1, Conflict},
};

} // namespace

const char *failureTextId(int returnCode)
{
    const auto *failure =
        std::find_if(std::begin(Failures), std::end(Failures), [returnCode](const Failure &row) {
            return row.first <= returnCode && returnCode <= row.last;
        });
    return failure == std::end(Failures) ? Other : failure->textId;
}

} // namespace InstallResult
