#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

#include "house/SourceTree.h"

namespace venlo::test
{

namespace
{
/// What a reader's browser makes of a page.
struct Page {
    QString language;
    QString title;
    QStringList links;
    QStringList ids;
    QStringList styles;
    QHash<QString, QString> pictures; ///< source and alternative text
    QString error;                    ///< what is wrong with its markup
};

void take(const QXmlStreamReader &xml, Page &page)
{
    const auto value = [&](const char *name) {
        return xml.attributes().value(QLatin1String(name)).toString();
    };
    const auto element = xml.name();
    if (xml.attributes().hasAttribute(QLatin1String("id")))
        page.ids += value("id");
    if (element == QLatin1String("html"))
        page.language = value("lang");
    else if (element == QLatin1String("a"))
        page.links += value("href");
    else if (element == QLatin1String("link"))
        page.styles += value("href");
    else if (element == QLatin1String("img"))
        page.pictures.insert(value("src"), value("alt"));
}

Page read(const QString &path)
{
    Page page;
    const QString text = readSource(path);
    if (!text.startsWith(QLatin1String("<!DOCTYPE html>\n")))
        page.error = QStringLiteral("no document type");
    QXmlStreamReader xml(text);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        take(xml, page);
        if (xml.name() == QLatin1String("title"))
            page.title = xml.readElementText();
    }
    if (xml.hasError())
        page.error = QStringLiteral("line %1: %2").arg(xml.lineNumber()).arg(xml.errorString());
    return page;
}

QString manualFolder()
{
    return sourceRoot() + QStringLiteral("/docs/manual");
}

QString fileText(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}
} // namespace

/// The manual as a reader meets it: every page can be reached, nothing leads nowhere.
class tst_Manual : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void pagesAreWellFormed();
    void everyPageIsLinkedFromTheIndex();
    void everyLinkLeadsSomewhere();
    void everyPictureHasAText();
    void everyPictureIsTaken();
    void everyPageTheProgramOpensExists();
    void installedCopyIsTheSame();
    void screenshotsAreCopied();
    void missingScreenshotsAreNamed();

private:
    QHash<QString, Page> m_pages; ///< by file name
};

void tst_Manual::initTestCase()
{
    const QStringList files = sourceFiles(manualFolder(), {QStringLiteral("*.htm")});
    for (const QString &file : files)
        m_pages.insert(file, read(manualFolder() + QLatin1Char('/') + file));
    for (const char *name : {"index", "main", "site", "pattern", "sync", "filelist", "overwrite",
                             "message", "unattended"})
        QVERIFY2(m_pages.contains(QLatin1String(name) + QStringLiteral(".htm")), name);
}

void tst_Manual::pagesAreWellFormed()
{
    QSet<QString> titles;
    for (auto page = m_pages.cbegin(); page != m_pages.cend(); ++page) {
        QVERIFY2(page->error.isEmpty(),
                 qPrintable(page.key() + QStringLiteral(": ") + page->error));
        QCOMPARE(page.key(), page.key().toLower());
        QCOMPARE(page->language, QStringLiteral("ja"));
        QCOMPARE(page->styles, QStringList{QStringLiteral("style.css")});
        QVERIFY2(!page->title.isEmpty() && !titles.contains(page->title), qPrintable(page.key()));
        titles.insert(page->title);
        QCOMPARE(page->ids.size(), QSet<QString>(page->ids.begin(), page->ids.end()).size());
    }
    QVERIFY(QFile::exists(manualFolder() + QStringLiteral("/style.css")));
}

void tst_Manual::everyPageIsLinkedFromTheIndex()
{
    const QStringList linked = m_pages.value(QStringLiteral("index.htm")).links;
    for (const QString &page : m_pages.keys())
        QVERIFY2(linked.contains(page), qPrintable(page));
}

void tst_Manual::everyLinkLeadsSomewhere()
{
    int anchors = 0;
    for (auto page = m_pages.cbegin(); page != m_pages.cend(); ++page) {
        for (const QString &link : page->links) {
            const QStringList parts = link.split(QLatin1Char('#'));
            const QString target = parts[0].isEmpty() ? page.key() : parts[0];
            const QString shown = page.key() + QStringLiteral(" -> ") + link;
            QVERIFY2(m_pages.contains(target), qPrintable(shown));
            if (parts.size() < 2)
                continue;
            QVERIFY2(m_pages.value(target).ids.contains(parts[1]), qPrintable(shown));
            ++anchors;
        }
    }
    QVERIFY(anchors > 0);
}

void tst_Manual::everyPictureHasAText()
{
    int pictures = 0;
    for (auto page = m_pages.cbegin(); page != m_pages.cend(); ++page) {
        for (auto picture = page->pictures.cbegin(); picture != page->pictures.cend(); ++picture) {
            QVERIFY2(!picture.value().trimmed().isEmpty(), qPrintable(picture.key()));
            ++pictures;
        }
    }
    QVERIFY(pictures > 0);
}

/// tools/help-screenshots provides exactly the pictures that the pages show.
void tst_Manual::everyPictureIsTaken()
{
    const QString script = readSource(sourceRoot() + QStringLiteral("/tools/help-screenshots"));
    const QRegularExpression list(QStringLiteral("^names=\"([^\"]*)\"$"),
                                  QRegularExpression::MultilineOption);
    const QStringList names =
        list.match(script).captured(1).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    QSet<QString> taken;
    for (const QString &name : names)
        taken.insert(QStringLiteral("img/") + name + QStringLiteral(".png"));
    QSet<QString> shown;
    for (const Page &page : std::as_const(m_pages)) {
        for (const QString &picture : page.pictures.keys())
            shown.insert(picture);
    }
    QCOMPARE(shown, taken);
}

/// The names that sources hand to W_Help: in the call itself, or in a table of windows and pages.
void tst_Manual::everyPageTheProgramOpensExists()
{
    const QRegularExpression call(QStringLiteral("W_Help\\(([^;]*)\\);"));
    const QRegularExpression literal(QStringLiteral("QStringLiteral\\(\"([^\"]*)\"\\)"));
    const QRegularExpression pair(
        QStringLiteral("\\{\\s*QStringLiteral\\(\"\\w+\"\\),\\s*QStringLiteral\\(\"([^\"]*)\"\\)"));
    QSet<QString> opened;
    const auto collect = [&](const QRegularExpression &pattern, const QString &text) {
        auto matches = pattern.globalMatch(text);
        while (matches.hasNext())
            opened.insert(matches.next().captured(1));
    };
    const QString src = sourceRoot() + QStringLiteral("/src");
    for (const QString &file : sourceFiles(src, {QStringLiteral("*.cpp")})) {
        const QString text = readSource(src + QLatin1Char('/') + file);
        if (!text.contains(QLatin1String(".W_Help(")))
            continue;
        auto calls = call.globalMatch(text);
        while (calls.hasNext())
            collect(literal, calls.next().captured(1));
        collect(pair, text);
    }
    QVERIFY(opened.contains(QStringLiteral("main")));
    QVERIFY(opened.contains(QStringLiteral("index")));
    for (const QString &page : std::as_const(opened)) {
        const QString file = page.contains(QLatin1Char('.')) ? page : page + QStringLiteral(".htm");
        QVERIFY2(m_pages.contains(file), qPrintable(page));
    }
}

void tst_Manual::installedCopyIsTheSame()
{
    const QString installed = QStringLiteral(VENLO_INSTALLED_MANUAL "/");
    const QStringList files =
        sourceFiles(manualFolder(), {QStringLiteral("*.htm"), QStringLiteral("*.css")});
    QVERIFY(files.contains(QStringLiteral("style.css")));
    for (const QString &file : files)
        QCOMPARE(fileText(installed + file), fileText(manualFolder() + QLatin1Char('/') + file));
}

namespace
{
constexpr int scriptLimit = 20000; ///< ms

struct ScriptRun {
    int status = -1;
    QString errors;
};

ScriptRun takePictures(const QString &build, const QString &manual)
{
    QProcess script;
    script.start(sourceRoot() + QStringLiteral("/tools/help-screenshots"), {build, manual});
    if (!script.waitForFinished(scriptLimit))
        return {};
    return {script.exitCode(), QString::fromUtf8(script.readAllStandardError())};
}

bool write(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}
} // namespace

void tst_Manual::screenshotsAreCopied()
{
    const QTemporaryDir folder;
    const QString build = folder.filePath(QStringLiteral("build tree"));
    for (const char *name :
         {"main", "site", "pattern", "sync", "filelist", "overwrite", "message", "wait"})
        QVERIFY(
            write(QStringLiteral("%1/screenshots/%2.png").arg(build, QLatin1String(name)), name));
    const QString manual = folder.filePath(QStringLiteral("manual"));
    QCOMPARE(takePictures(build, manual).status, 0);
    QCOMPARE(QDir(manual + QStringLiteral("/img")).entryList(QDir::Files).size(), 8);
    QCOMPARE(fileText(manual + QStringLiteral("/img/wait.png")), QStringLiteral("wait"));
}

void tst_Manual::missingScreenshotsAreNamed()
{
    const QTemporaryDir folder;
    const QString manual = folder.filePath(QStringLiteral("manual"));
    for (const char *name : {"main", "site", "sync", "filelist", "overwrite", "message"})
        QVERIFY(write(
            folder.filePath(QStringLiteral("screenshots/%1.png").arg(QLatin1String(name))), name));
    const ScriptRun run = takePictures(folder.path(), manual);
    QCOMPARE(run.status, 1);
    QVERIFY2(run.errors.endsWith(QStringLiteral(": pattern.png wait.png\n")),
             qPrintable(run.errors));
    QVERIFY(!QFile::exists(manual));
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::tst_Manual)
#include "tst_Manual.moc"
