#include "startup/settings/SettingsFile.h"

#include <algorithm>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

#include "platform/CodePage.h"
#include "platform/Files.h"
#include "startup/settings/SettingsValue.h"
#include "startup/settings/StaleFiles.h"

namespace venlo
{

namespace
{
constexpr QLatin1String lineEnd("\r\n");
constexpr QLatin1String groupIndent("   ");
constexpr QLatin1String keyIndent("      ");

QString rootClose()
{
    return QStringLiteral("</運用>");
}

QString newDocument()
{
    return QStringLiteral("<?xml version='1.0' encoding='Shift-JIS' ?>") + lineEnd +
           QStringLiteral("<運用>") + lineEnd + rootClose();
}

QString openTag(const QString &name)
{
    return QLatin1Char('<') + name + QLatin1Char('>');
}

QString closeTag(const QString &name)
{
    return QStringLiteral("</") + name + QLatin1Char('>');
}

qsizetype find(const QString &text, const QString &part, qsizetype from = 0)
{
    return text.indexOf(part, from, Qt::CaseInsensitive);
}

bool createEmpty(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::NewOnly) && makePrivateFile(path);
}

/// A file that is empty at its first line end holds no document, whatever follows.
bool holdsDocument(const QByteArray &bytes)
{
    return !bytes.isEmpty() && !bytes.startsWith('\r') && !bytes.startsWith('\n');
}

bool standsThere(const QString &path)
{
    QFile file(path);
    return QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly) &&
           holdsDocument(file.read(1));
}

/// A file beside the target that holds the bytes and is no longer open; empty when that failed.
/// Private from its first byte on: its class creates files for their owner only.
QString writtenBeside(const QFileInfo &target, const QByteArray &bytes)
{
    const QString stem = QLatin1Char('.') + target.fileName() + QLatin1Char('.');
    removeStale(target.absolutePath(), stem + QStringLiteral("??????"));
    QTemporaryFile file(target.absolutePath() + QLatin1Char('/') + stem + QStringLiteral("XXXXXX"));
    if (!file.open() || file.write(bytes) != bytes.size() || !flushToDisk(file))
        return {};
    file.setAutoRemove(false); // it is closed with its object only
    return file.fileName();
}

bool writeWhole(const QString &path, const QByteArray &bytes)
{
    const QString written = writtenBeside(QFileInfo(path), bytes);
    if (written.isEmpty() || replaceFile(written, path))
        return !written.isEmpty();
    QFile::remove(written);
    return false;
}
} // namespace

yIni::yIni(FrontEnd &frontEnd) : m_frontEnd(frontEnd) {}

void yIni::GetTxt(const QString &path, bool &ok)
{
    constexpr QLatin1String devName("_DV.xml");
    m_path = path;
    const qsizetype at = m_path.indexOf(devName, 0, Qt::CaseInsensitive);
    if (at >= 0)
        m_path.replace(at, devName.size(), QStringLiteral(".xml"));
    m_document.clear();
    m_read.clear();
    const bool loaded = load();
    m_unreadable = !loaded && QFileInfo::exists(m_path);
    if (!loaded)
        return;
    if (m_document.isEmpty())
        m_document = newDocument();
    m_read = m_document;
    ok = true;
}

bool yIni::load()
{
    if (!QFileInfo::exists(m_path))
        return createEmpty(m_path);
    QFile file(m_path);
    if (!QFileInfo(m_path).isFile() || !file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return false;
    if (holdsDocument(bytes))
        m_document = fromSystemText(bytes);
    return true;
}

QString yIni::element(const QString &text, const QString &name, Content content)
{
    const QString opening = openTag(name);
    const qsizetype open = find(text, opening);
    const qsizetype close = find(text, closeTag(name));
    if (open < 0 && close < 0)
        return {};
    if (open < 0 || close < open) {
        m_frontEnd.message(opening + QStringLiteral(" の設定が読み込めません") + QLatin1Char('\r') +
                           QStringLiteral("ﾕｰｻﾞｰ環境ﾌｧｲﾙ(") + m_path +
                           QStringLiteral(") が破損しています"));
        return {};
    }
    qsizetype start = open + opening.size();
    qsizetype end = close;
    if (content == Content::Group) {
        start += lineEnd.size();
        end -= groupIndent.size();
    }
    return text.mid(start, std::max<qsizetype>(end - start, 0));
}

void yIni::GetGtx(const QString &group)
{
    m_groupName = group;
    m_groupText = element(m_document, group, Content::Group);
}

Result<QVariant> yIni::vGtVal(const QString &key, const QVariant &defaultValue)
{
    const QString text = element(m_groupText, key, Content::Value);
    if (text.isEmpty())
        return defaultValue;
    switch (defaultValue.typeId()) {
    case QMetaType::QString:
        return QVariant(text);
    case QMetaType::Bool: {
        const auto value = settingBoolean(text);
        if (!value)
            return Error{ErrorClass::Local, openTag(key) + text, 0};
        return QVariant(*value);
    }
    case QMetaType::QDate:
    case QMetaType::QDateTime: {
        const auto value = settingDate(text);
        QVariant converted = value ? QVariant(*value) : defaultValue;
        converted.convert(defaultValue.metaType());
        return converted;
    }
    default:
        return QVariant(settingNumber(text));
    }
}

void yIni::SetVal(const QString &key, const QVariant &value)
{
    const QString opening = openTag(key);
    const QString text = settingText(value);
    const qsizetype open = find(m_groupText, opening);
    const qsizetype close = find(m_groupText, closeTag(key));
    const qsizetype start = open + opening.size();
    if (open >= 0 && close >= start)
        m_groupText.replace(start, close - start, text);
    else
        m_groupText += keyIndent + opening + text + closeTag(key) + lineEnd;
}

void yIni::SetGtx()
{
    if (m_groupName.isEmpty())
        return;
    if (m_document.isEmpty())
        m_document = newDocument();
    const QString opening = openTag(m_groupName);
    const QString closing = closeTag(m_groupName);
    const qsizetype open = find(m_document, opening);
    if (open < 0) {
        const QString group =
            groupIndent + opening + lineEnd + m_groupText + groupIndent + closing + lineEnd;
        const qsizetype end = find(m_document, rootClose());
        m_document.insert(end < 0 ? m_document.size() : end, group);
        return;
    }
    const qsizetype start = open + opening.size();
    const qsizetype close = find(m_document, closing, start);
    if (close < 0)
        return; // damaged; reading it said so
    m_document =
        m_document.left(start) + lineEnd + m_groupText + groupIndent + m_document.mid(close);
}

void yIni::SetTxt(bool &ok)
{
    if (m_unreadable || m_path.isEmpty())
        return;
    if (writeWhole(m_path, toSystemText(m_document)))
        ok = true;
}

bool yIni::changed() const
{
    return m_document != m_read || !standsThere(m_path);
}

} // namespace venlo
