#include "test_support.h"

#include "calibration/mb_question.h"
#include "common/app_paths.h"
#include "common/error_log.h"
#include "common/own_text.h"
#include "common/scale_table.h"
#include "common/text_file.h"
#include "link/register_map.h"
#include "plcsim/sim_port.h"
#include "shell/plc_form.h"
#include "shell/single_instance.h"

#include <QAbstractButton>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

void ResetConsoleState()
{
    StepNo = 444;
    SendFlag = true;
    ExpectedReplyLen = 0;
    WriteImage = QString(152, QLatin1Char('0'));
    PortNo = 2;
    LiveReadDone = InitPollDue = HoistPollOn = false;
    ZeroRequest = SpanRequest = HoistCmdPending = false;
    ParamSetDone = WriteDoneZDTime = WriteDoneSensor = TimesSaved = HoistParamSaved = OptionDone = false;
    BaselineTaken = ZDTimeLoaded = SensorLoaded = false;
    HumidActive = IsCurrentCal = false;
    ScaleNo = 0;
    MenuMode = 0;
    GatePassed = false;
    CurrentForm.clear();
    LangNo = 1;
    ProfileFile.clear();
    MbText.clear();
    MbIsOk = true;
    MbIsError = false;
    MbResult = false;
    LinkEngine& l = Link();
    l.Timer1.stop();
    l.Timer2.stop();
    l.Timer3.stop();
    l.RetryCount = 0;
    l.InitPollCount = 0;
    l.LastFrame.clear();
    l.LastStep.clear();
    SetDefaultNames();
    ResetErrorLogMemory();
}

FilesAsUser::FilesAsUser(unsigned uid, unsigned gid)
{
    oldMask_ = ::umask(022);
    if (::geteuid() != 0)
        return;
    oldGid_ = ::setfsgid(gid);
    oldUid_ = ::setfsuid(uid);
}

FilesAsUser::~FilesAsUser()
{
    if (oldUid_ >= 0)
        ::setfsuid(uid_t(oldUid_));
    if (oldGid_ >= 0)
        ::setfsgid(gid_t(oldGid_));
    ::umask(mode_t(oldMask_));
}

ConsoleHarness::ConsoleHarness()
{
    AppPaths::setAppFolder(dir.path());
    InstallOwnTranslation();
    ResetConsoleState();
    sim.setLiveModel(false);
    sim.setNoise(false);
    SetPortFactory([this](int) { return new plcsim::SimPort(&sim); });
    EndProcess = [this](int code) { endedProcess = code; };
    EndProgramHook = [this] { programEnded = true; };
}

ConsoleHarness::~ConsoleHarness()
{
    Forms::unloadAll();
    Link().Timer1.stop();
    Link().Timer2.stop();
    Link().Timer3.stop();
    Link().closePort();
    delete Link().port();
    SetPortFactory({});
    EndProcess = {};
    EndProgramHook = {};
    ReleaseInstanceLock();
}

QString ConsoleHarness::path(const QString& relative) const { return dir.filePath(relative); }

void ConsoleHarness::connectLink()
{
    Link().openPort(PortNo);
    Link().resetForLogin();
}

QStringList ConsoleHarness::takeFrames()
{
    QStringList out;
    for (const QByteArray& f : sim.requests())
        out << QString::fromLatin1(f);
    sim.clearRequests();
    return out;
}

void UseScaleDevices(int scale)
{
    const ScaleDevices& d = kScaleDevices[size_t(scale)];
    ScaleNo = short(scale);
    ScaleTitle = ScaleCaption = ScaleName[size_t(scale)];
    CalZeroDevice = QLatin1String(d.zero);
    CalSpanDevice = QLatin1String(d.span);
    CalWeightDevice = QLatin1String(d.weight);
    OptionDevice = QLatin1String(d.option);
    ParamDevice = QLatin1String(d.param);
}

MbAnswerer::MbAnswerer(QObject* parent) : QObject(parent)
{
    timer_.setInterval(5);
    connect(&timer_, &QTimer::timeout, this, &MbAnswerer::poll);
    timer_.start();
}

void MbAnswerer::poll()
{
    MbQuestion* box = MbQuestion::showing();
    if (!box || !box->isVisible())
        return;
    if (auto* l = box->findChild<QLabel*>(QStringLiteral("LblAsk")))
        texts << l->text();
    errorIcons << MbIsError;
    okOnly << MbIsOk;
    const bool answer = answers_.isEmpty() ? true : answers_.takeFirst();
    const char* name = MbIsOk ? "CmdMbOK" : (answer ? "CmdYes" : "CmdNo");
    if (auto* b = box->findChild<QAbstractButton*>(QLatin1String(name)))
        b->click();
}

QColor TextColor(QWidget* label) { return label->palette().color(QPalette::WindowText); }

void ClickOn(QWidget* w) { QTest::mouseClick(w, Qt::LeftButton, {}, w->rect().center()); }

void LogIn()
{
    auto* plc = Forms::get<PLC>(QStringLiteral("PLC"));
    QVERIFY(plc->load());
    plc->show();
    plc->txtPassword->setText(QStringLiteral("48213"));
    plc->cmdOk();
    QVERIFY(plc->FraCeng[0]->isVisible());
}

namespace {
bool shown(const QString& form)
{
    QWidget* w = Forms::loaded(form);
    return w && w->isVisible();
}
}  // namespace

void Walk(const QStringList& steps)
{
    for (const QString& step : steps) {
        if (step.startsWith(QLatin1String("open:"))) {
            Forms::show(step.mid(5));
            continue;
        }
        if (step.startsWith(QLatin1String("hidden:"))) {
            QTRY_VERIFY2(!shown(step.mid(7)), qPrintable(step.mid(7) + QStringLiteral(" is still showing")));
            continue;
        }
        if (step == QLatin1String("idle")) {
            QTRY_VERIFY2(SendFlag && !Link().Timer2.isActive(), "the link stays busy");
            continue;
        }
        const QString form = step.section(QLatin1Char(':'), 0, 0);
        const QString control = step.section(QLatin1Char(':'), 1).section(QLatin1Char('='), 0, 0);
        QTRY_VERIFY2(shown(form), qPrintable(form + QStringLiteral(" is not showing before ") + step));
        QWidget* w = Ctl(Forms::loaded(form), control);
        QVERIFY2(w, qPrintable(step + QStringLiteral(": no such control")));
        if (step.contains(QLatin1Char('='))) {
            qobject_cast<QLineEdit*>(w)->setText(step.section(QLatin1Char('='), 1));
            continue;
        }
        QTRY_VERIFY2(w->isVisible(), qPrintable(step + QStringLiteral(": the control is not showing")));
        ClickOn(w);
    }
}

QString Frame(const QString& body)
{
    int sum = 3;
    for (QChar c : body)
        sum += c.unicode();
    return QChar(2) + body + QChar(3) + QStringLiteral("%1").arg(sum & 0xFF, 2, 16, QLatin1Char('0')).toUpper();
}

QString WriteFrame(const char* at, const char* data)
{
    const QString digits = QLatin1String(data);
    const QString count = QStringLiteral("%1").arg(digits.size() / 2, 2, 16, QLatin1Char('0')).toUpper();
    return Frame(QLatin1Char('1') + QLatin1String(at) + count + digits);
}

QString WordsHex(const QList<int>& words)
{
    QString s;
    for (int w : words) {
        const int v = w & 0xFFFF;
        s += QStringLiteral("%1%2").arg(v & 0xFF, 2, 16, QLatin1Char('0')).arg(v >> 8, 2, 16, QLatin1Char('0'));
    }
    return s.toUpper();
}

bool putBytes(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    return f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(bytes) == bytes.size();
}

QByteArray rawBytes(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

QString ErrorLogText()
{
    QString text;
    TextFile::read(ErrorLogPath(QDate::currentDate()), &text);
    return text;
}

QByteArray GbLines(const QStringList& lines)
{
    return lines.isEmpty() ? QByteArray()
                           : TextFile::encode(lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n"));
}
