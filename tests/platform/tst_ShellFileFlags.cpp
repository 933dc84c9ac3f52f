#include <QTest>

#include "platform/ShellFileOperation.h"

namespace venlo
{

/// The function codes and flags handed to the system's shell.
class tst_ShellFileFlags : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void codes_data();
    void codes();
    void flags_data();
    void flags();
};

void tst_ShellFileFlags::codes_data()
{
    QTest::addColumn<QString>("verb");
    QTest::addColumn<int>("code");
    QTest::newRow("move") << QStringLiteral("移動") << 1;
    QTest::newRow("copy") << QStringLiteral("複写") << 2;
    QTest::newRow("delete") << QStringLiteral("削除") << 3;
    QTest::newRow("other text") << QStringLiteral("名前の変更") << 0;
    QTest::newRow("longer text") << QStringLiteral("移動する") << 0;
    QTest::newRow("none") << QString() << 0;
}

void tst_ShellFileFlags::codes()
{
    QFETCH(const QString, verb);
    QFETCH(const int, code);
    QCOMPARE(static_cast<int>(shellVerbCode(verb)), code);
}

void tst_ShellFileFlags::flags_data()
{
    QTest::addColumn<int>("verb");
    QTest::addColumn<bool>("silent");
    QTest::addColumn<bool>("noConfirm");
    QTest::addColumn<int>("flags");
    struct Base {
        const char *name;
        int verb;
        int flags;
    };
    for (const Base base :
         {Base{"none", 0, 0}, Base{"move", 1, 0}, Base{"copy", 2, 0}, Base{"delete", 3, 64}}) {
        QTest::addRow("%s", base.name) << base.verb << false << false << base.flags;
        QTest::addRow("%s, silent", base.name) << base.verb << true << false << base.flags + 4;
        QTest::addRow("%s, no question", base.name)
            << base.verb << false << true << base.flags + 16;
        QTest::addRow("%s, neither", base.name) << base.verb << true << true << base.flags + 20;
    }
}

void tst_ShellFileFlags::flags()
{
    QFETCH(const int, verb);
    QFETCH(const bool, silent);
    QFETCH(const bool, noConfirm);
    QFETCH(const int, flags);
    QCOMPARE(int(shellFileFlags(static_cast<ShellVerb>(verb), silent, noConfirm)), flags);
}

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_ShellFileFlags)
#include "tst_ShellFileFlags.moc"
