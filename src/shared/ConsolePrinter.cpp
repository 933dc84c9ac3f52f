#include "shared/ConsolePrinter.h"

#include <QStringList>

#include "shared/FrontEnd.h"

namespace venlo
{

namespace
{
QString kindText(Outcome::Kind kind)
{
    switch (kind) {
    case Outcome::Kind::Uploaded:
        return QStringLiteral("ｱｯﾌﾟﾛｰﾄﾞ");
    case Outcome::Kind::Downloaded:
        return QStringLiteral("ﾀﾞｳﾝﾛｰﾄﾞ");
    case Outcome::Kind::DeletedRemote:
        return QStringLiteral("FTP側から削除");
    case Outcome::Kind::DeletedLocal:
        return QStringLiteral("ﾏｲｺﾝﾋﾟｭｰﾀｰ側から削除");
    case Outcome::Kind::FolderMade:
        return QStringLiteral("ﾌｫﾙﾀﾞ作成");
    case Outcome::Kind::FolderRemovedRemote:
        return QStringLiteral("FTP側からﾌｫﾙﾀﾞ削除");
    case Outcome::Kind::FolderRemovedLocal:
        return QStringLiteral("ﾏｲｺﾝﾋﾟｭｰﾀｰ側からﾌｫﾙﾀﾞ削除");
    case Outcome::Kind::Skipped:
        return QStringLiteral("ｽｷｯﾌﾟ");
    case Outcome::Kind::GivenUp:
        break;
    }
    return QStringLiteral("実行できませんでした");
}

QString printable(QString line)
{
    for (QChar &character : line) {
        if (character.category() == QChar::Other_Control && character != QLatin1Char('\t'))
            character = QChar(QChar::ReplacementCharacter);
    }
    return line;
}
} // namespace

QString ConsolePrinter::outcomeText(const Outcome &outcome)
{
    QString line = kindText(outcome.kind) + QStringLiteral("  ") + outcome.from;
    if (!outcome.to.isEmpty())
        line += QStringLiteral(" → ") + outcome.to;
    if (!outcome.why.isEmpty())
        line += QStringLiteral(" (") + outcome.why + QLatin1Char(')');
    return line;
}

QByteArray ConsolePrinter::systemText(std::FILE * /*stream*/, const QString &line)
{
    return line.toLocal8Bit();
}

void ConsolePrinter::write(std::FILE *stream, const QString &line)
{
    const QByteArray bytes = m_encoding(stream, printable(line)) + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stream);
    std::fflush(stream);
}

void ConsolePrinter::printOutcome(const Outcome &outcome)
{
    write(m_results, outcomeText(outcome));
}

void ConsolePrinter::printResult(const QString &line)
{
    write(m_results, line);
}

void ConsolePrinter::printError(const QString &text)
{
    QString lines = text;
    lines.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    lines.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    while (lines.endsWith(QLatin1Char('\n')))
        lines.chop(1);
    for (const QString &line : lines.split(QLatin1Char('\n')))
        write(m_messages, line);
}

} // namespace venlo
