#include "support/RawFiles.h"

#include <filesystem>
#include <fstream>
#include <iterator>

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

} // namespace venlo::test
