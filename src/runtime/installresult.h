#pragma once

/// What Android's package manager says of an installation, as one of the texts for the user.
namespace InstallResult {

/// AOSP frameworks/base, core/java/android/content/pm/PackageManager.java (INSTALL_SUCCEEDED).
constexpr int Success = 1;

/// The same in deletions (DELETE_SUCCEEDED).
constexpr int DeleteSuccess = 1;

/// The translation id of the text for a failed installation, by its INSTALL_FAILED_… or
/// INSTALL_PARSE_FAILED_… code; a literal.
const char *failureTextId(int returnCode);

} // namespace InstallResult
