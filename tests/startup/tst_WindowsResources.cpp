#include <memory>

#include <windows.h>

#include <QCoreApplication>
#include <QTest>
#include <QXmlStreamReader>

namespace
{

QString programPath()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/VenloFtp.exe");
}

const wchar_t *wide(const QString &text)
{
    return reinterpret_cast<const wchar_t *>(text.utf16());
}

/// The built program as a file of resources: nothing of it is run.
class Resources
{
public:
    Resources()
        : m_module(LoadLibraryExW(wide(programPath()), nullptr,
                                  LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE))
    {
    }
    ~Resources()
    {
        if (m_module != nullptr)
            FreeLibrary(m_module);
    }
    Resources(const Resources &) = delete;
    Resources &operator=(const Resources &) = delete;

    /// Empty when there is none.
    [[nodiscard]] QByteArray bytes(const wchar_t *name, const wchar_t *type) const
    {
        const HRSRC found = FindResourceW(m_module, name, type);
        if (found == nullptr)
            return {};
        const auto *data = static_cast<const char *>(LockResource(LoadResource(m_module, found)));
        return {data, static_cast<qsizetype>(SizeofResource(m_module, found))};
    }

private:
    HMODULE m_module;
};

/// The version resource, as the properties window of a file shows it.
class VersionInfo
{
public:
    VersionInfo()
    {
        const QString path = programPath();
        m_bytes.resize(static_cast<qsizetype>(GetFileVersionInfoSizeW(wide(path), nullptr)));
        if (GetFileVersionInfoW(wide(path), 0, static_cast<DWORD>(m_bytes.size()),
                                m_bytes.data()) == FALSE)
            m_bytes.clear();
    }

    /// In Japanese; null when there is none.
    [[nodiscard]] QString text(const QString &name) const
    {
        UINT size = 0;
        const auto *at = static_cast<const wchar_t *>(
            value(QStringLiteral("\\StringFileInfo\\041104b0\\") + name, size));
        return at != nullptr ? QString::fromWCharArray(at) : QString();
    }

    /// Zeros when there are none.
    [[nodiscard]] VS_FIXEDFILEINFO numbers() const
    {
        UINT size = 0;
        const void *at = value(QStringLiteral("\\"), size);
        return at != nullptr ? *static_cast<const VS_FIXEDFILEINFO *>(at) : VS_FIXEDFILEINFO{};
    }

    /// The language and the code page that the texts are found by.
    [[nodiscard]] std::pair<WORD, WORD> translation() const
    {
        UINT size = 0;
        const auto *at =
            static_cast<const WORD *>(value(QStringLiteral("\\VarFileInfo\\Translation"), size));
        return at != nullptr && size == 2 * sizeof *at ? std::pair(at[0], at[1])
                                                       : std::pair<WORD, WORD>();
    }

private:
    [[nodiscard]] const void *value(const QString &path, UINT &size) const
    {
        void *at = nullptr;
        return !m_bytes.isEmpty() &&
                       VerQueryValueW(m_bytes.constData(), wide(path), &at, &size) != FALSE
                   ? at
                   : nullptr;
    }

    QByteArray m_bytes;
};

QString dotted(DWORD high, DWORD low)
{
    return QStringLiteral("%1.%2.%3.%4")
        .arg(HIWORD(high))
        .arg(LOWORD(high))
        .arg(HIWORD(low))
        .arg(LOWORD(low));
}

/// The texts of a manifest's settings and the attributes of its other elements.
class Manifest
{
public:
    explicit Manifest(const QByteArray &xml) : m_xml(xml) {}

    [[nodiscard]] bool isWellFormed() const
    {
        QXmlStreamReader reader(m_xml);
        while (!reader.atEnd())
            reader.readNext();
        return !m_xml.isEmpty() && !reader.hasError();
    }

    [[nodiscard]] QStringList texts(const QString &element) const
    {
        return collect(element, [](QXmlStreamReader &reader) {
            return reader.readElementText(QXmlStreamReader::SkipChildElements);
        });
    }

    [[nodiscard]] QStringList attributes(const QString &element, const QString &name) const
    {
        return collect(element, [&](QXmlStreamReader &reader) {
            return reader.attributes().value(name).toString();
        });
    }

private:
    template <typename Read>
    [[nodiscard]] QStringList collect(const QString &element, Read read) const
    {
        QStringList found;
        QXmlStreamReader reader(m_xml);
        while (!reader.atEnd()) {
            if (reader.readNext() == QXmlStreamReader::StartElement && reader.name() == element)
                found.append(read(reader));
        }
        return found;
    }

    QByteArray m_xml;
};

#pragma pack(push, 2)
struct IconDirectory {
    WORD reserved;
    WORD type;
    WORD count;
};
struct IconEntry {
    BYTE width; ///< pixels, 0 for 256
    BYTE height;
    BYTE colours;
    BYTE reserved;
    WORD planes;
    WORD bits;
    DWORD bytes;
    WORD id;
};
#pragma pack(pop)

/// What Windows reads of VenloFtp.exe before it runs, and what its properties window shows.
class tst_WindowsResources : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void manifestAsksForScreensAndPaths();
    void manifestAsksForCommonControlsAndNoRights();
    void codePageIsTheMachines();
    void versionIsTheProjects();
    void textsOfTheVersion_data();
    void textsOfTheVersion();
    void textsAreJapanese();
    void iconHasTheSizesThatTheShellShows();

private:
    std::unique_ptr<Resources> m_resources;
    [[nodiscard]] Manifest manifest() const
    {
        return Manifest(m_resources->bytes(MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(24)));
    }
};

void tst_WindowsResources::initTestCase()
{
    m_resources = std::make_unique<Resources>();
    QVERIFY2(manifest().isWellFormed(), qPrintable(programPath()));
}

void tst_WindowsResources::manifestAsksForScreensAndPaths()
{
    const auto one = [](const char *text) { return QStringList{QString::fromLatin1(text)}; };
    QCOMPARE(manifest().texts(QStringLiteral("dpiAwareness")), one("PerMonitorV2"));
    QCOMPARE(manifest().texts(QStringLiteral("dpiAware")),
             one("true/pm")); // before Windows 10 1607
    QCOMPARE(manifest().texts(QStringLiteral("longPathAware")), one("true"));
    QCOMPARE(manifest().attributes(QStringLiteral("supportedOS"), QStringLiteral("Id")),
             one("{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}"));
}

void tst_WindowsResources::manifestAsksForCommonControlsAndNoRights()
{
    const QStringList names =
        manifest().attributes(QStringLiteral("assemblyIdentity"), QStringLiteral("name"));
    QCOMPARE(names, QStringList({QStringLiteral("Venlo.VenloFtp"),
                                 QStringLiteral("Microsoft.Windows.Common-Controls")}));
    const QStringList versions =
        manifest().attributes(QStringLiteral("assemblyIdentity"), QStringLiteral("version"));
    QCOMPARE(versions,
             QStringList({QStringLiteral(VENLO_VERSION ".0"), QStringLiteral("6.0.0.0")}));
    QCOMPARE(
        manifest().attributes(QStringLiteral("requestedExecutionLevel"), QStringLiteral("level")),
        QStringList{QStringLiteral("asInvoker")});
}

/// Logs and lists are written for the machine's other programs.
void tst_WindowsResources::codePageIsTheMachines()
{
    QCOMPARE(manifest().texts(QStringLiteral("activeCodePage")), QStringList());
}

void tst_WindowsResources::versionIsTheProjects()
{
    const VS_FIXEDFILEINFO numbers = VersionInfo().numbers();
    QCOMPARE(numbers.dwSignature, DWORD{VS_FFI_SIGNATURE});
    QCOMPARE(dotted(numbers.dwFileVersionMS, numbers.dwFileVersionLS),
             QStringLiteral(VENLO_VERSION ".0"));
    QCOMPARE(dotted(numbers.dwProductVersionMS, numbers.dwProductVersionLS),
             QStringLiteral(VENLO_VERSION ".0"));
    QCOMPARE(numbers.dwFileType, DWORD{VFT_APP});
}

void tst_WindowsResources::textsOfTheVersion_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("ProductName") << QStringLiteral("Venlo FTP");
    QTest::newRow("ProductVersion") << QStringLiteral(VENLO_VERSION);
    QTest::newRow("FileDescription") << QStringLiteral("Venlo FTP");
    QTest::newRow("FileVersion") << QStringLiteral(VENLO_VERSION);
    QTest::newRow("InternalName") << QStringLiteral("VenloFtp");
    QTest::newRow("OriginalFilename") << QStringLiteral("VenloFtp.exe");
    QTest::newRow("CompanyName") << QStringLiteral("Venlo");
}

void tst_WindowsResources::textsOfTheVersion()
{
    QFETCH(QString, text);
    QCOMPARE(VersionInfo().text(QString::fromLatin1(QTest::currentDataTag())), text);
}

void tst_WindowsResources::textsAreJapanese()
{
    constexpr WORD japanese = 0x0411;
    constexpr WORD unicode = 1200;
    QCOMPARE(VersionInfo().translation(), std::pair(japanese, unicode));
}

void tst_WindowsResources::iconHasTheSizesThatTheShellShows()
{
    // Under this name the window system looks for the windows' icon.
    const QByteArray group = m_resources->bytes(L"IDI_ICON1", MAKEINTRESOURCEW(14));
    QVERIFY(group.size() >= qsizetype{sizeof(IconDirectory)});
    const auto *directory = reinterpret_cast<const IconDirectory *>(group.constData());
    QCOMPARE(group.size(),
             static_cast<qsizetype>(sizeof *directory + directory->count * sizeof(IconEntry)));
    const auto *entries =
        reinterpret_cast<const IconEntry *>(group.constData() + sizeof *directory);
    QSet<int> sizes;
    for (int i = 0; i < directory->count; ++i) {
        const QByteArray picture =
            m_resources->bytes(MAKEINTRESOURCEW(entries[i].id), MAKEINTRESOURCEW(3));
        QCOMPARE(picture.size(), static_cast<qsizetype>(entries[i].bytes));
        sizes.insert(entries[i].width == 0 ? 256 : entries[i].width);
    }
    for (const int size : {16, 32, 48, 256})
        QVERIFY2(sizes.contains(size), qPrintable(QString::number(size)));
}

} // namespace

QTEST_GUILESS_MAIN(tst_WindowsResources)
#include "tst_WindowsResources.moc"
