#pragma once

#include <optional>

#include <QDateTime>
#include <QFileInfo>
#include <QString>

namespace venlo
{

/// A file or folder as it was at the moment of the look. Names and meanings are QFileInfo's, which
/// does it for all but shortcuts: of a name that ends in ".lnk" it tells the size, the time and the
/// kind of what the shortcut leads to, and asks the shell, which may wait for a machine that is
/// switched off. A shortcut is a small file; the server gets it as one.
class EntryLook
{
public:
    explicit EntryLook(const QString &path);
    explicit EntryLook(const QFileInfo &info);

    [[nodiscard]] QString fileName() const { return m_info.fileName(); }
    [[nodiscard]] QString filePath() const { return m_info.filePath(); }
    [[nodiscard]] QString absoluteFilePath() const { return m_info.absoluteFilePath(); }

    [[nodiscard]] bool exists() const;
    [[nodiscard]] bool isFile() const;
    [[nodiscard]] bool isDir() const;
    [[nodiscard]] bool isSymbolicLink() const;
    [[nodiscard]] bool isJunction() const;
    [[nodiscard]] bool isHidden() const;
    [[nodiscard]] bool isReadable() const;
    [[nodiscard]] bool isWritable() const;
    [[nodiscard]] QFile::Permissions permissions() const;
    [[nodiscard]] qint64 size() const;
    [[nodiscard]] QDateTime lastModified() const;
    [[nodiscard]] QDateTime birthTime() const;

private:
    /// What the system says about an entry; all false when there is none.
    struct Itself {
        bool there = false;
        bool folder = false;
        bool link = false; ///< a symbolic link of that name
        bool junction = false;
        bool hidden = false;
        bool readOnly = false;
        qint64 size = 0;
        QDateTime modified;
        QDateTime created;
    };
    [[nodiscard]] static std::optional<Itself> lookAtShortcut(const QString &path);

    QFileInfo m_info;
    std::optional<Itself> m_itself; ///< of a name that ends in ".lnk"
};

} // namespace venlo
