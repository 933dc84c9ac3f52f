#include "startup/settings/UserDataFolder.h"

#include <utility>

#include <QDir>
#include <QFileInfo>

#include "platform/Process.h"
#include "platform/SpecialFolders.h"
#include "startup/settings/InitialFolder.h"
#include "startup/settings/UserDataIni.h"

namespace venlo
{

namespace
{
constexpr QLatin1Char carriageReturn('\r');

QString withSeparator(const QString &folder)
{
    const QString native = QDir::toNativeSeparators(folder);
    return native.endsWith(QDir::separator()) ? native : native + QDir::separator();
}

QString venloFolder(const QString &below, const QString &baseName)
{
    return withSeparator(below + QStringLiteral("/Venlo/") + baseName);
}

QString notFound(const QString &what, const QString &used)
{
    return what + QStringLiteral(" が見つかりません") + carriageReturn +
           QStringLiteral("ﾕｰｻﾞｰﾃﾞｰﾀｰﾌｫﾙﾀﾞは　") + used + QStringLiteral(" を使用します");
}
} // namespace

ProgramPlaces ProgramPlaces::ofThisProgram(const QString &baseName)
{
    return {baseName, executableFolder(), FsGtSpFld(SpecialFolder::ApplicationData),
            FsGtSpFld(SpecialFolder::MyDocuments)};
}

UserDataFolder::UserDataFolder(ProgramPlaces places, FrontEnd &frontEnd)
    : m_places(std::move(places)), m_frontEnd(frontEnd),
      m_programData(withSeparator(m_places.programFolder + QStringLiteral("apData"))),
      m_default(venloFolder(m_places.applicationData, m_places.baseName))
{
}

void UserDataFolder::W_UserData()
{
    registerExecutable();
    m_userData = folderOf(readToken());
    createWhenMissing();
}

void UserDataFolder::registerExecutable() const
{
    const QString executable = m_places.programFolder + m_places.baseName + QStringLiteral(".exe");
    if (programSetting(m_places.baseName) != executable)
        setProgramSetting(m_places.baseName, executable);
}

QString UserDataFolder::readToken()
{
    const QString ini = m_places.programFolder + QStringLiteral("UserData.ini");
    const auto token = readUserDataToken(ini);
    if (token && !token->isEmpty())
        return *token;
    if (token) {
        m_frontEnd.message(QStringLiteral(" ﾕｰｻﾞｰﾃﾞｰﾀｰﾌｫﾙﾀﾞが定義されていません") + carriageReturn +
                           m_default + QStringLiteral(" を使用します"));
    } else {
        m_frontEnd.message(notFound(ini, m_default));
    }
    return QStringLiteral("%applicaion data%");
}

QString UserDataFolder::folderOf(const QString &token)
{
    if (token == QLatin1String("%app%"))
        return withSeparator(m_places.programFolder + QStringLiteral("usData"));
    if (token == QLatin1String("%doc") || token == QLatin1String("%my document%"))
        return venloFolder(m_places.myDocuments, m_places.baseName);
    if (!token.startsWith(QLatin1Char('%')))
        return existingFolder(token);
    // The misspelt token is the one that installed files hold.
    if (token != QLatin1String("%usr%") && token != QLatin1String("%applicaion data%"))
        m_frontEnd.warn(QStringLiteral("UserData.ini: ") + token +
                        QStringLiteral(" は使えません ") + m_default +
                        QStringLiteral(" を使用します"));
    return m_default;
}

QString UserDataFolder::existingFolder(const QString &path)
{
    const QFileInfo folder(QDir(m_places.programFolder), QDir::fromNativeSeparators(path));
    m_own = !folder.isDir();
    if (!m_own)
        return withSeparator(folder.absoluteFilePath());
    m_frontEnd.message(notFound(path, m_default));
    return m_default;
}

void UserDataFolder::createWhenMissing()
{
    if (QFileInfo(m_userData).isDir())
        return;
    if (!createUserDataFolder(m_userData, m_programData + QStringLiteral("dbFtp.mdb")))
        m_frontEnd.message(m_userData + QStringLiteral(" を作成できません"));
}

} // namespace venlo
