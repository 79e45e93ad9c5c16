"""The desktop entry with which a file manager installs APK files."""

import configparser
import subprocess

ENTRY = "usr/share/applications/bramd-open-apk.desktop"
APK = "application/vnd.android.package-archive"


def read(path):
    parser = configparser.ConfigParser(interpolation=None)
    parser.optionxform = str
    parser.read(path, encoding="utf-8")
    return parser["Desktop Entry"]


def test_it_is_a_valid_entry(installed):
    result = subprocess.run(["desktop-file-validate", installed / ENTRY], check=False,
                            capture_output=True, text=True)
    assert (result.returncode, result.stdout, result.stderr) == (0, "", "")


def test_it_opens_apk_files_and_is_not_in_the_app_grid(installed):
    entry = read(installed / ENTRY)
    assert entry["MimeType"] == f"{APK};"
    assert entry["NoDisplay"] == "true"


def test_its_program_is_installed(installed):
    program, *fields = read(installed / ENTRY)["Exec"].split()
    assert fields == ["%F"]
    assert (installed / "usr/bin" / program).stat().st_mode & 0o111


def test_the_database_of_types_finds_it(installed):
    applications = installed / "usr/share/applications"
    subprocess.run(["update-desktop-database", applications], check=True)
    cache = applications / "mimeinfo.cache"
    try:
        assert f"{APK}=bramd-open-apk.desktop;" in cache.read_text(encoding="utf-8").splitlines()
    finally:
        cache.unlink()
