// A settings file of any content: read, changed and written back without a crash.
#include "startup/settings/SettingsFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "FuzzInput.h"

namespace
{
class SilentFrontEnd : public venlo::FrontEnd
{
public:
    void message(const QString &) override {}
    bool question(const QString &) override { return false; }
    bool retryOrCancel(const QString &) override { return false; }
    QString pickFolder(const QString &, const QString &) override { return {}; }
    venlo::OverwriteAnswer askOverwrite(const venlo::OverwriteQuestion &) override { return {}; }
    void showWait(const QString &) override {}
    void closeWait() override {}
    void setMessageLine(const QString &) override {}
    void addStatus(const QString &) override {}
    void progress(const venlo::TransferProgress &) override {}
    void outcome(const venlo::Outcome &) override {}
    void printResult(const QString &) override {}
    void warn(const QString &) override {}
    [[nodiscard]] bool cancelled() const override { return false; }
    void yield() override {}
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("User.xml"));
    {
        QFile file(path);
        promise(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(fuzzInput(data, size));
    }
    SilentFrontEnd frontEnd;
    venlo::yIni settings(frontEnd);
    bool ok = false;
    settings.GetTxt(path, ok);
    settings.GetGtx(QStringLiteral("ffMain"));
    (void)settings.vGtVal(QStringLiteral("Left"), 10.0);
    (void)settings.vGtVal(QStringLiteral("Shown"), true);
    (void)settings.vGtVal(QStringLiteral("Root"), QStringLiteral("C:\\"));
    settings.SetVal(QStringLiteral("Left"), 20);
    settings.SetGtx();
    return 0;
}
