#pragma once

#include <QByteArray>

/// A new file, mode 0644 whatever the umask, that takes another's place only when it is complete.
///
/// Where the file system can, it has no name until then, so that whoever is killed meanwhile leaves
/// nothing behind. Elsewhere, and without "/proc", its name is the final one with a suffix.
class TemporaryFile
{
public:
    /// Of the suffix: a dot and letters.
    static constexpr int SuffixBytes = 7;

    /// Opens a file beside `finalPath`, an absolute path that is no link.
    explicit TemporaryFile(const QByteArray &finalPath);

    /// What has not been put into its place goes.
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    bool isOpen() const { return m_descriptor >= 0; }

    /// To be called once. True when the disk has it all.
    bool write(const QByteArray &content);

    /// `isNew`: nothing is known to be in the place.
    bool putIntoPlace(bool isNew);

private:
    void openNamed();
    bool writeContent() const;
    bool link(const QByteArray &path) const;
    bool linkNamed();

    /// All over again, for want of "/proc", by which a file without a name is found.
    bool writeNamed();

    QByteArray m_finalPath;
    QByteArray m_content;
    QByteArray m_name; // while it has one of its own
    int m_descriptor;
};
