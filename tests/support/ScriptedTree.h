#pragma once

#include <QByteArray>
#include <QDateTime>

#include <map>
#include <mutex>
#include <optional>
#include <vector>

namespace venlo::test
{

/// The files of a scripted server, in memory. Paths are absolute raw bytes ("/a/b"); letter case
/// counts. Safe from all threads: the server's sessions and the test use it at the same time.
class ScriptedTree
{
public:
    enum class Kind { File, Folder, Link };
    struct Node {
        Kind kind = Kind::File;
        QByteArray bytes;   ///< of a link: its target, as a listing shows it
        QDateTime modified; ///< UTC
    };
    struct Item {
        QByteArray name;
        Node node;
    };

    /// Makes missing folders on the way. Without a time: 2024-05-06 07:08:09 UTC.
    void put(const QByteArray &path, const QByteArray &bytes, const QDateTime &modified = {});
    void makeFolder(const QByteArray &path, const QDateTime &modified = {});
    void makeLink(const QByteArray &path, const QByteArray &target);
    void clear();

    [[nodiscard]] bool exists(const QByteArray &path) const;
    [[nodiscard]] std::optional<Node> node(const QByteArray &path) const;
    /// Bytes of a file; null when there is none.
    [[nodiscard]] QByteArray file(const QByteArray &path) const;
    [[nodiscard]] QDateTime modified(const QByteArray &path) const;
    /// The entries of one folder, sorted by their bytes.
    [[nodiscard]] std::vector<Item> list(const QByteArray &folder) const;
    /// All paths, sorted; folders end with "/". For comparisons that print well.
    [[nodiscard]] QList<QByteArray> paths() const;

    // What FTP commands do; false where a server refuses.
    [[nodiscard]] bool store(const QByteArray &path, const QByteArray &bytes);
    [[nodiscard]] bool make(const QByteArray &path);
    [[nodiscard]] bool removeFile(const QByteArray &path);
    [[nodiscard]] bool removeFolder(const QByteArray &path);
    [[nodiscard]] bool rename(const QByteArray &from, const QByteArray &to);
    [[nodiscard]] bool setModified(const QByteArray &path, const QDateTime &utc);

    [[nodiscard]] static QByteArray parentOf(const QByteArray &path);
    /// Absolute path of an argument as seen from a folder; "." and ".." are resolved.
    [[nodiscard]] static QByteArray resolve(const QByteArray &folder, const QByteArray &argument);

private:
    [[nodiscard]] bool isFolder(const QByteArray &path) const;
    void makeParents(const QByteArray &path);

    mutable std::mutex m_mutex;
    std::map<QByteArray, Node> m_nodes; ///< without "/"
};

} // namespace venlo::test
