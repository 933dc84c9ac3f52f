#include "support/RawFiles.h"

#include <fstream>
#include <iterator>

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>

namespace venlo::test
{

namespace
{

bool setTime(const std::string &path, const QDateTime &modified)
{
    const qint64 ms = modified.toMSecsSinceEpoch();
    const timespec when{static_cast<time_t>(ms / 1000), static_cast<long>(ms % 1000) * 1'000'000};
    const timespec times[2] = {when, when};
    return ::utimensat(AT_FDCWD, path.c_str(), times, 0) == 0;
}

} // namespace

QByteArray rawPath(const QString &path)
{
    return QFile::encodeName(path);
}

QByteArray rawPath(const std::filesystem::path &path)
{
    return QByteArray::fromStdString(path.native());
}

std::filesystem::path diskPath(const QByteArray &path)
{
    return path.toStdString();
}

bool writeFile(const QByteArray &path, const QByteArray &bytes, const QDateTime &modified)
{
    {
        std::ofstream out(path.toStdString(), std::ios::binary | std::ios::trunc);
        out.write(bytes.constData(), bytes.size());
        if (!out.flush())
            return false;
    }
    return !modified.isValid() || setTime(path.toStdString(), modified);
}

QByteArray readFile(const QByteArray &path)
{
    std::ifstream in(path.toStdString(), std::ios::binary);
    if (!in)
        return {};
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    return {bytes.data(), static_cast<qsizetype>(bytes.size())};
}

bool makeFolders(const QByteArray &path)
{
    std::error_code error;
    std::filesystem::create_directories(path.toStdString(), error);
    return std::filesystem::is_directory(path.toStdString(), error);
}

QDateTime modifiedTime(const QByteArray &path)
{
    struct stat info = {};
    if (::lstat(path.constData(), &info) != 0)
        return {};
    const qint64 ms = info.st_mtim.tv_sec * 1000LL + info.st_mtim.tv_nsec / 1'000'000;
    return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC);
}

} // namespace venlo::test
