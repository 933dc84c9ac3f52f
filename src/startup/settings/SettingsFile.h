#pragma once

#include <QString>
#include <QVariant>

#include "shared/FrontEnd.h"
#include "shared/Result.h"

namespace venlo
{

/// The user's settings: a small XML text of fixed layout, held whole in memory, searched and
/// edited as plain text. Owned by the program object. Call GetTxt once, then (GetGtx, vGtVal) to
/// read and (GetGtx, SetVal, SetGtx) to write, then SetTxt at shut-down.
///
/// The file is in CP932 with CR LF. Values are neither escaped nor typed: a value that holds its
/// own tag damages the file. It must never be parsed as XML, other writers rely on the layout.
class yIni
{
public:
    explicit yIni(FrontEnd &frontEnd);

    /// Loads the file, or creates it empty. "_DV.xml" in the path means ".xml". ok turns true on
    /// success and stays as it was otherwise.
    void GetTxt(const QString &path, bool &ok);

    /// Selects a group. Group and key names are compared without letter case.
    void GetGtx(const QString &group);

    /// The value of a key in the selected group, converted to the type of the default: text,
    /// boolean or date; anything else is read as a number (double). The default when the key is
    /// missing, empty or damaged. An Error when a text is no boolean.
    [[nodiscard]] Result<QVariant> vGtVal(const QString &key, const QVariant &defaultValue);

    /// Sets a key in the selected group's text; SetGtx puts that text back into the document.
    void SetVal(const QString &key, const QVariant &value);
    void SetGtx();

    /// Writes the document as a whole: killed at any point, the old or the new file is there. ok
    /// turns true on success and stays as it was otherwise.
    void SetTxt(bool &ok);
    /// Whether anything was changed since GetTxt, written or not, or no file holds it any more. A
    /// run that changed nothing has nothing to write over what another process saved meanwhile.
    [[nodiscard]] bool changed() const;

    /// The file in use, after GetTxt.
    [[nodiscard]] const QString &path() const { return m_path; }

private:
    /// What stands between two tags; group contents lose their line end and closing indent.
    enum class Content { Group, Value };
    [[nodiscard]] QString element(const QString &text, const QString &name, Content content);
    [[nodiscard]] bool load();

    FrontEnd &m_frontEnd;
    QString m_path;
    QString m_document;
    QString m_read; ///< the document as GetTxt found it
    QString m_groupText;
    QString m_groupName;
    bool m_unreadable = false; ///< a file that could not be read must not be replaced
};

} // namespace venlo
