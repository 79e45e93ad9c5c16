// usage: floor_files METHOD WORK N
// The least that it takes to keep the files of N apps, with METHOD "posix" (bare system calls) or
// "qsavefile" (QSaveFile to write, QFile to read). WORK is one of
//   first    write entry, icon and settings entry of each
//   again    read the same files and compare them with what should be there
//   index    list the directory of desktop entries and read every one of ours
//   rewrite  write the sharing registry, as it lies there, N times anew
//   read     read the sharing registry and compare it, N times
// Nothing is checked beyond what tells whether the files are right: there is no announcement, no
// daemon and no log.

#include "common/cost.h"
#include "common/sample.h"

#include <QFile>
#include <QSaveFile>

#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

const QByteArray Applications = "/usr/share/applications/";
const QByteArray Icons = "/var/lib/bramd/";
const QByteArray Settings = "/usr/share/corvo-settings/entries/";
const QByteArray Registry = "/var/lib/bramd/sharing.json";

struct Content
{
    QByteArray path;
    QByteArray bytes;
};

[[noreturn]] void fail(const char *what, const QByteArray &path)
{
    std::fprintf(stderr, "floor_files: %s: ", what);
    std::perror(path.constData());
    std::exit(EXIT_FAILURE);
}

void writePosix(const Content &content)
{
    QByteArray temporary = content.path + ".XXXXXX";
    const int file = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (file < 0 || ::fchmod(file, 0644) != 0 ||
        ::write(file, content.bytes.constData(), static_cast<std::size_t>(content.bytes.size())) !=
            content.bytes.size() ||
        ::fdatasync(file) != 0 || ::close(file) != 0 ||
        ::rename(temporary.constData(), content.path.constData()) != 0)
        fail("cannot write", content.path);
}

void writeQt(const Content &content)
{
    QSaveFile file(QString::fromUtf8(content.path));
    if (!file.open(QIODevice::WriteOnly) || file.write(content.bytes) != content.bytes.size() ||
        !file.commit())
        fail("cannot write", content.path);
}

QByteArray readPosix(const QByteArray &path)
{
    const int file = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    struct stat status = {};
    if (file < 0 || ::fstat(file, &status) != 0)
        fail("cannot read", path);
    QByteArray bytes(static_cast<int>(status.st_size), Qt::Uninitialized);
    if (::read(file, bytes.data(), static_cast<std::size_t>(bytes.size())) != bytes.size() ||
        ::close(file) != 0)
        fail("cannot read", path);
    return bytes;
}

QByteArray readQt(const QByteArray &path)
{
    QFile file(QString::fromUtf8(path));
    if (!file.open(QIODevice::ReadOnly))
        fail("cannot read", path);
    return file.readAll();
}

struct Method
{
    std::function<void(const Content &)> write;
    std::function<QByteArray(const QByteArray &)> read;
};

void compare(const Method &method, const Content &content)
{
    if (method.read(content.path) != content.bytes)
        fail("is different", content.path);
}

std::vector<Content> filesOf(int apps)
{
    std::vector<Content> files;
    for (int number = 0; number < apps; ++number) {
        const QByteArray name = Sample::fileName(number).toUtf8();
        files.push_back({Icons + name + ".png", Sample::icon(number)});
        files.push_back({Settings + name + ".json", Sample::settingsEntry(number)});
        files.push_back({Applications + name + ".desktop", Sample::desktopEntry(number)});
    }
    return files;
}

void readIndex(const Method &method)
{
    DIR *directory = ::opendir(Applications.constData());
    if (directory == nullptr)
        fail("cannot list", Applications);
    while (const dirent *entry = ::readdir(directory)) {
        if (std::strncmp(entry->d_name, "bramd_", 6) == 0)
            method.read(Applications + entry->d_name);
    }
    ::closedir(directory);
}

int work(const Method &method, const QByteArray &name, int count)
{
    const auto forAll = [](const std::vector<Content> &files, const auto &function) {
        for (const Content &content : files)
            function(content);
    };
    const auto write = [&method](const Content &content) { method.write(content); };
    const auto check = [&method](const Content &content) { compare(method, content); };

    if (name == "first" || name == "again") {
        const std::vector<Content> files = filesOf(count);
        if (name == "again") {
            forAll(files, write);
            printCost(count, [&] { forAll(files, check); });
        } else {
            printCost(count, [&] { forAll(files, write); });
        }
    } else if (name == "index") {
        printCost(count, [&] { readIndex(method); });
    } else if (name == "rewrite" || name == "read") {
        const std::vector<Content> files(static_cast<std::size_t>(count),
                                         {Registry, method.read(Registry)});
        if (name == "rewrite")
            printCost(count, [&] { forAll(files, write); });
        else
            printCost(count, [&] { forAll(files, check); });
    } else {
        std::fprintf(stderr, "floor_files: no such work: %s\n", name.constData());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: floor_files METHOD WORK N\n");
        return EXIT_FAILURE;
    }
    const bool bare = std::strcmp(argv[1], "posix") == 0;
    const Method method = bare ? Method{writePosix, readPosix} : Method{writeQt, readQt};
    return work(method, argv[2], std::atoi(argv[3]));
}
