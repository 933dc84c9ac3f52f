#pragma once

#include <QString>

#include "shared/FrontEnd.h"

namespace venlo
{

/// Where the choice of the user data folder starts from. Folders as the system writes them.
struct ProgramPlaces {
    QString baseName;        ///< program base name, without ".exe" and "_dv"
    QString programFolder;   ///< folder of the executable, with a trailing separator
    QString applicationData; ///< the user's Application Data folder, no trailing separator
    QString myDocuments;     ///< the user's documents folder, no trailing separator

    /// The places of the running program.
    [[nodiscard]] static ProgramPlaces ofThisProgram(const QString &baseName);
};

/// Decides once, before anything else is read, where the user's files live. Owned by the program
/// object; reads no settings and never opens the database.
class UserDataFolder
{
public:
    UserDataFolder(ProgramPlaces places, FrontEnd &frontEnd);

    /// Registers the executable, reads "UserData.ini" beside it and creates the chosen folder with
    /// the initial database when it is missing. Every problem ends in a folder name and at most
    /// one message for each; nothing stops the start.
    void W_UserData();

    /// Data that ships with the program; trailing separator.
    [[nodiscard]] const QString &programDataFolder() const { return m_programData; }
    /// Settings, database and logs of the user; trailing separator. Empty before W_UserData.
    [[nodiscard]] const QString &userDataFolder() const { return m_userData; }

    /// Whether the folder is there for this program alone. One that somebody named may be for more.
    [[nodiscard]] bool isOwnFolder() const { return m_own; }

private:
    void registerExecutable() const;
    [[nodiscard]] QString readToken();
    [[nodiscard]] QString folderOf(const QString &token);
    [[nodiscard]] QString existingFolder(const QString &path);
    void createWhenMissing();

    ProgramPlaces m_places;
    FrontEnd &m_frontEnd;
    QString m_programData;
    QString m_default;
    QString m_userData;
    bool m_own = true;
};

} // namespace venlo
