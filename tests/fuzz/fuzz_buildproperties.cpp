#include "config/buildproperties.h"
#include "fuzz/fuzztarget.h"

// The text of a "build.prop" file.

void FuzzTarget::prepare() {}

void FuzzTarget::run(Input input)
{
    const BuildProperties properties = parseBuildProperties(input.rest());

    // A second "=" ends a value, before which blanks count.
    const QByteArray written =
        "ro.build.version.sdk=" + QByteArray::number(properties.sdkVersion) +
        "=\nro.build.version.release=" + properties.release.toUtf8() +
        "=\nro.build.version.security_patch=" + properties.securityPatch.toUtf8() + "=";
    expect(parseBuildProperties(written) == properties, "properties read as they were written");
    expect(parseBuildProperties(QByteArray(), properties) == properties,
           "an empty file changes nothing");
}
