#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "platform/CodePage.h"
#include "startup/settings/SettingsFile.h"
#include "support/ScriptedPerson.h"

namespace venlo
{

using test::ScriptedPerson;

/// Reading and editing; what is written to the disk has a test of its own.
class tst_SettingsFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void newDocument_data();
    void newDocument();
    void devNameIsTheSameFile_data();
    void devNameIsTheSameFile();
    void groupsAndKeys();
    void namesIgnoreCase();
    void keyOfAnotherGroup();
    void missingGivesDefault_data();
    void missingGivesDefault();
    void converts_data();
    void converts();
    void invalidBooleanIsAnError();
    void setValueReplaces();
    void emptyGroup();
    void newGroupGoesBeforeTheEnd();
    void otherGroupsStay();
    void groupWithoutLineEnds();
    void damaged_data();
    void damaged();
    void damagedGroup();
    void valueWithItsOwnTag();
    void nothingSelected();
    void badBytesDoNotStopIt();

private:
    void write(const QString &text) const;
    void write(const QByteArray &bytes) const;
    [[nodiscard]] QString saved(yIni &settings) const;
    void load(yIni &settings) const;
    [[nodiscard]] QString text(yIni &settings, const char *group, const char *key) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

namespace
{
const QString head = QStringLiteral("<?xml version='1.0' encoding='Shift-JIS' ?>\r\n<運用>\r\n");
const QString tail = QStringLiteral("</運用>");

QString latin(const char *text)
{
    return QString::fromLatin1(text);
}

QString group(const char *name, const QString &content)
{
    return latin("   <%1>\r\n%2   </%1>\r\n").arg(latin(name), content);
}

QString key(const char *name, const QString &value)
{
    return latin("      <%1>%2</%1>\r\n").arg(latin(name), value);
}
} // namespace

void tst_SettingsFile::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_path = m_folder->filePath(QStringLiteral("User.xml"));
}

void tst_SettingsFile::write(const QByteArray &bytes) const
{
    QFile file(m_path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

void tst_SettingsFile::write(const QString &text) const
{
    write(toSystemText(text));
}

void tst_SettingsFile::load(yIni &settings) const
{
    bool ok = false;
    settings.GetTxt(m_path, ok);
    QVERIFY(ok);
}

QString tst_SettingsFile::saved(yIni &settings) const
{
    bool ok = false;
    settings.SetTxt(ok);
    QFile file(m_path);
    if (!ok || !file.open(QIODevice::ReadOnly))
        return QStringLiteral("not saved");
    return fromSystemText(file.readAll());
}

QString tst_SettingsFile::text(yIni &settings, const char *group, const char *key) const
{
    settings.GetGtx(latin(group));
    const auto value = settings.vGtVal(latin(key), QStringLiteral("default"));
    return value ? value.value().toString() : QStringLiteral("error");
}

void tst_SettingsFile::newDocument_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty file") << QByteArray();
    QTest::newRow("empty first line") << QByteArray("\r\n<G>\r\n   </G>\r\n");
    QTest::newRow("empty first line, line feed only") << QByteArray("\nx");
}

void tst_SettingsFile::newDocument()
{
    QFETCH(QByteArray, content);
    write(content);
    ScriptedPerson person;
    yIni settings(person);
    load(settings);
    QCOMPARE(saved(settings), head + tail);
    QVERIFY(person.verify());
}

void tst_SettingsFile::devNameIsTheSameFile_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("used");
    QTest::newRow("_DV") << latin("User_DV.xml") << latin("User.xml");
    QTest::newRow("_dv") << latin("User_dv.XML") << latin("User.xml");
    QTest::newRow("the first one only") << latin("a_DV.xml_DV.xml") << latin("a.xml_DV.xml");
    QTest::newRow("elsewhere in the name") << latin("User_DVx.xml") << latin("User_DVx.xml");
}

void tst_SettingsFile::devNameIsTheSameFile()
{
    QFETCH(QString, given);
    QFETCH(QString, used);
    ScriptedPerson person;
    yIni settings(person);
    bool ok = false;
    settings.GetTxt(m_folder->filePath(given), ok);
    QVERIFY(ok);
    QCOMPARE(settings.path(), m_folder->filePath(used));
    QVERIFY(QFile::exists(m_folder->filePath(used)));
}

void tst_SettingsFile::groupsAndKeys()
{
    write(head + group("A", key("Root", QStringLiteral("C:\\運用 & <x>"))) + tail);
    ScriptedPerson person;
    yIni settings(person);
    load(settings);
    QCOMPARE(text(settings, "A", "Root"), QStringLiteral("C:\\運用 & <x>"));
    QVERIFY(person.verify());
}

void tst_SettingsFile::namesIgnoreCase()
{
    write(head + group("Main", key("Root", latin("v"))) + tail);
    ScriptedPerson person;
    yIni settings(person);
    load(settings);
    QCOMPARE(text(settings, "mAIN", "rOOT"), latin("v"));
    settings.SetVal(latin("ROOT"), latin("w"));
    settings.SetGtx();
    QCOMPARE(saved(settings), head + group("Main", key("Root", latin("w"))) + tail);
}

void tst_SettingsFile::keyOfAnotherGroup()
{
    write(head + group("A", key("Left", latin("1"))) + group("B", key("Top", latin("2"))) + tail);
    ScriptedPerson person;
    yIni settings(person);
    load(settings);
    QCOMPARE(text(settings, "B", "Left"), latin("default"));
    QCOMPARE(text(settings, "A", "Top"), latin("default"));
    QCOMPARE(text(settings, "A", "Left"), latin("1"));
    QVERIFY(person.verify());
}

void tst_SettingsFile::missingGivesDefault_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("text") << QVariant(latin("d"));
    QTest::newRow("boolean") << QVariant(true);
    QTest::newRow("number") << QVariant(42);
    QTest::newRow("date") << QVariant(QDateTime(QDate(2024, 1, 2), QTime(3, 4)));
}

void tst_SettingsFile::missingGivesDefault()
{
    QFETCH(QVariant, value);
    write(head + group("A", key("Empty", QString())) + tail);
    ScriptedPerson person;
    yIni settings(person);
    load(settings);
    settings.GetGtx(latin("A"));
    for (const char *name : {"Missing", "Empty"}) {
        const auto read = settings.vGtVal(latin(name), value);
        QVERIFY(read.ok());
        QCOMPARE(read.value(), value);
    }
    settings.GetGtx(latin("NoGroup"));
    const auto read = settings.vGtVal(latin("Empty"), value);
    QVERIFY(read.ok());
    QCOMPARE(read.value(), value);
    QVERIFY(person.verify());
}

void tst_SettingsFile::converts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVariant>("byDefault");
    QTest::addColumn<QVariant>("value");
    const QDateTime early(QDate(2000, 1, 1), QTime(0, 0));
    QTest::newRow("text stays") << latin("12 px") << QVariant(latin("d"))
                                << QVariant(latin("12 px"));
    QTest::newRow("boolean") << latin("True") << QVariant(false) << QVariant(true);
    QTest::newRow("boolean from a number") << latin("0") << QVariant(true) << QVariant(false);
    QTest::newRow("whole number") << latin("800") << QVariant(1) << QVariant(800.0);
    QTest::newRow("fraction") << latin("0.5") << QVariant(1.0) << QVariant(0.5);
    QTest::newRow("no number at all") << latin("wide") << QVariant(7) << QVariant(0.0);
    QTest::newRow("date") << latin("2024/02/03 04:05:06") << QVariant(early)
                          << QVariant(QDateTime(QDate(2024, 2, 3), QTime(4, 5, 6)));
    QTest::newRow("day") << latin("2024/02/03") << QVariant(QDate(2000, 1, 1))
                         << QVariant(QDate(2024, 2, 3));
    QTest::newRow("invalid date") << latin("someday") << QVariant(early) << QVariant(early);
    QTest::newRow("invalid day") << latin("2024/02/31") << QVariant(QDate(2000, 1, 1))
                                 << QVariant(QDate(2000, 1, 1));
}

void tst_SettingsFile::converts()
{
    QFETCH(QString, text);
    QFETCH(QVariant, byDefault);
    QFETCH(QVariant, value);
    write(head + group("A", key("K", text)) + tail);
    ScriptedPerson person;
    yIni settings(person);
    load(settings);
    settings.GetGtx(latin("A"));
    const auto read = settings.vGtVal(latin("K"), byDefault);
    QVERIFY(read.ok());
    QCOMPARE(read.value(), value);
    QCOMPARE(read.value().typeId(), value.typeId());
    QVERIFY(person.verify());
}

void tst_SettingsFile::invalidBooleanIsAnError()
{
    write(head + group("A", key("K", latin("perhaps"))) + tail);
    ScriptedPerson person;
    yIni settings(person);
    load(settings);
    settings.GetGtx(latin("A"));
    QVERIFY(!settings.vGtVal(latin("K"), true).ok());
    QVERIFY(person.verify());
}

void tst_SettingsFile::setValueReplaces()
{
    ScriptedPerson person;
    yIni settings(person);
    load(settings);
    settings.GetGtx(latin("A"));
    settings.SetVal(latin("Left"), 10);
    settings.SetVal(latin("Max"), true);
    settings.SetVal(latin("Left"), -20);
    settings.SetGtx();
    QCOMPARE(saved(settings),
             head + group("A", key("Left", latin("-20")) + key("Max", latin("True"))) + tail);
    const auto left = settings.vGtVal(latin("Left"), 0);
    QVERIFY(left.ok());
    QCOMPARE(left.value().toInt(), -20);
}

void tst_SettingsFile::emptyGroup()
{
    const QString document = head + group("A", QString()) + tail;
    write(document);
    ScriptedPerson person;
    yIni settings(person);
    load(settings);
    QCOMPARE(text(settings, "A", "K"), latin("default"));
    settings.SetGtx();
    QCOMPARE(saved(settings), document);
    settings.SetVal(latin("K"), latin("v"));
    settings.SetGtx();
    QCOMPARE(saved(settings), head + group("A", key("K", latin("v"))) + tail);
    QVERIFY(person.verify());
}

void tst_SettingsFile::newGroupGoesBeforeTheEnd()
{
    write(head + group("A", key("K", latin("v"))) + tail);
    ScriptedPerson person;
    yIni settings(person);
    load(settings);
    settings.GetGtx(latin("B"));
    settings.SetVal(latin("K"), latin("w"));
    settings.SetGtx();
    QCOMPARE(saved(settings),
             head + group("A", key("K", latin("v"))) + group("B", key("K", latin("w"))) + tail);
}

void tst_SettingsFile::otherGroupsStay()
{
    const QString first = group("A", key("K", latin("1")));
    const QString last = group("C", key("K", latin("3")));
    write(head + first + group("B", key("K", latin("2"))) + last + tail);
    ScriptedPerson person;
    yIni settings(person);
    load(settings);
    settings.GetGtx(latin("B"));
    settings.SetVal(latin("K"), latin("longer than before"));
    settings.SetGtx();
    QCOMPARE(saved(settings),
             head + first + group("B", key("K", latin("longer than before"))) + last + tail);
}

void tst_SettingsFile::groupWithoutLineEnds()
{
    write(head + latin("   <A></A>\r\n") + tail);
    ScriptedPerson person;
    yIni settings(person);
    load(settings);
    QCOMPARE(text(settings, "A", "K"), latin("default"));
    settings.SetVal(latin("K"), latin("v"));
    settings.SetGtx();
    QCOMPARE(saved(settings), head + group("A", key("K", latin("v"))) + tail);
}

void tst_SettingsFile::damaged_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("no closing tag") << latin("      <K>v\r\n");
    QTest::newRow("no opening tag") << latin("      v</K>\r\n");
    QTest::newRow("closing tag first") << latin("      </K>v<K>\r\n");
}

void tst_SettingsFile::damaged()
{
    QFETCH(QString, line);
    write(head + group("A", line) + tail);
    ScriptedPerson person;
    yIni settings(person);
    load(settings);
    const QString message = QStringLiteral("<K> の設定が読み込めません\rﾕｰｻﾞｰ環境ﾌｧｲﾙ(") + m_path +
                            QStringLiteral(") が破損しています");
    person.expectMessage(message);
    QCOMPARE(text(settings, "A", "K"), latin("default"));
    person.expectMessage(message);
    QCOMPARE(text(settings, "A", "K"), latin("default"));
    QVERIFY(person.verify());
}

void tst_SettingsFile::damagedGroup()
{
    const QString document = head + latin("   <A>\r\n") + key("K", latin("v")) + tail;
    write(document);
    ScriptedPerson person;
    yIni settings(person);
    load(settings);
    person.expectMessage(QStringLiteral("<A> の設定が読み込めません\rﾕｰｻﾞｰ環境ﾌｧｲﾙ(") + m_path +
                         QStringLiteral(") が破損しています"));
    QCOMPARE(text(settings, "A", "K"), latin("default"));
    settings.SetVal(latin("K"), latin("w"));
    settings.SetGtx();
    QCOMPARE(saved(settings), document);
    QVERIFY(person.verify());
}

void tst_SettingsFile::valueWithItsOwnTag()
{
    ScriptedPerson person;
    yIni settings(person);
    load(settings);
    settings.GetGtx(latin("A"));
    settings.SetVal(latin("K"), latin("a</K>b"));
    settings.SetGtx();
    QCOMPARE(text(settings, "A", "K"), latin("a"));
}

void tst_SettingsFile::nothingSelected()
{
    ScriptedPerson person;
    yIni settings(person);
    load(settings);
    settings.SetVal(latin("K"), latin("v"));
    settings.SetGtx();
    QCOMPARE(saved(settings), head + tail);
}

void tst_SettingsFile::badBytesDoNotStopIt()
{
    write(toSystemText(head) +
          "   <A>\r\n      <K>a\xFF\x82</K>\r\n      <L>ok</L>\r\n   </A>\r\n" +
          toSystemText(tail));
    ScriptedPerson person;
    yIni settings(person);
    load(settings);
    QCOMPARE(text(settings, "A", "K"), QStringLiteral("a\uFFFD\uFFFD"));
    QCOMPARE(text(settings, "A", "L"), latin("ok"));
    QVERIFY(person.verify());
}

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_SettingsFile)
#include "tst_SettingsFile.moc"
