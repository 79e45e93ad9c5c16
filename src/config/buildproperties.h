#pragma once

#include <QByteArray>
#include <QString>

/// The properties of a runtime image that the host needs, as its "build.prop" gives them.
struct BuildProperties
{
    int sdkVersion = 0;    ///< Android SDK level; 0: not known
    QString release;       ///< Android release, e.g. "9"; empty: not known
    QString securityPatch; ///< date of the security patches, e.g. "2021-05-05"; empty: not known
};

bool operator==(const BuildProperties &left, const BuildProperties &right);

/// Returns `known` with each value that `content` has replaced. `content` is the text of a
/// "build.prop" file in UTF-8: lines KEY=VALUE without blanks around the "=". Of several lines
/// with one key the last holds; a value ends at a second "="; a key without "=" has the empty
/// value; a level that is no decimal number is 0. Lines with other keys are ignored.
BuildProperties parseBuildProperties(const QByteArray &content, BuildProperties known = {});
