// orvaplccfg against the in-process controller, and the installed command as a user runs it: the real
// executable in an application folder of its own, on a pseudo-terminal to the standalone controller.
#include "test_support.h"

#include "cfg/cfg_commands.h"
#include "common/lang.h"
#include "common/text_file.h"

#include <QProcess>
#include <QRegularExpression>
#include <QSerialPort>

namespace {

// A commissioned plant, saved to a file, and the command's output; every restore is confirmed.
struct Rig {
    ConsoleHarness h;
    QStringList out, err;
    CfgRun run;
    QString file = h.path(QStringLiteral("plant.cfg"));
    int saved;

    Rig()
    {
        h.sim.commission();
        CfgPrepare();
        run.out = [this](const QString& l) { out << l; };
        run.err = [this](const QString& l) { err << l; };
        run.yes = true;
        saved = CfgSave(run, file);
    }
    QStringList lines()
    {
        QString text;
        TextFile::read(file, &text);
        return text.split(QStringLiteral("\r\n"));
    }
    // Line n (from 1) of the saved file that starts with prefix; "[S500]\nbits": the first after that section's.
    int lineOf(const QString& prefix)
    {
        const QStringList l = lines();
        const auto starts = [](const QString& s) { return QRegularExpression(QRegularExpression::escape(s) + ".*"); };
        const qsizetype from = prefix.contains(u'\n') ? l.indexOf(starts(prefix.section(u'\n', 0, 0))) : 0;
        return int(l.indexOf(starts(prefix.section(u'\n', -1)), from)) + 1;
    }
    // The first line that starts with prefix becomes `text`; no text: the file ends before it.
    void edit(const char* prefix, const char* text)
    {
        QStringList l = lines();
        const int n = lineOf(QString::fromUtf8(prefix)) - 1;
        if (text)
            l[n] = QString::fromUtf8(text);
        else
            l = l.mid(0, n);
        TextFile::writeBytes(file, "\xEF\xBB\xBF" + TextFile::encodeAs(l.join(u"\r\n"), TextFile::Encoding::Utf8));
    }
};

// A change in the controller is named by diff in the form's units, restore writes that block alone with
// the form's frame, and the controller then says what the file says.
const struct { const char* name; char kind; int device, value; const char *diff, *writes; } kChanges[] = {
    {"parameter", 'D', 358, 300, "骨料4 [scale03.params] 慢速配料值: 350 -> 300", "112B21E"},
    {"sensor load in two decimals", 'D', 211, 12345, "传感器配置设定 [D200] 外加剂1: 300.00 -> 123.45", "111901C"},
    {"option bit", 'S', 525, 1, "骨料4 [scale03.options] 功能选项: 0--0 -> 2--0", "1004102"},
    {"option bit of S612", 'S', 618, 1, "系统功能设定 [S612] 系统功能设定: 0--0 -> 0--4", "1004C02"},
    {"plant time in tenths", 'D', 216, 55, "系统功能设定 [D215] 持续响铃时间: 5 -> 5.5", "111AE0C"},
    {"vibrator time the form rounds", 'D', 273, 62, "振动器振动时间设定 [D272] 骨料3振动器 计量振动时间: 6 (60) -> 6 (62)",
     "1122038"},
    {"deceleration distance, under the vibrator block too", 'D', 295, 400,
     "振动器振动时间设定 [D272] 粉灰振动器 振动时间: 30 -> 40\n斗提位置标定 [D291] 下降提前减速脉冲数: 300 -> 400", "1124C04"},
};

// A damaged file, or one value the editors would refuse: named with its line and what is wrong, and nothing
// goes to the controller, not even a read. The first line that starts with the prefix is replaced (no line:
// the file ends before it); the fault is that many lines after it; restore or diff.
const struct { const char *name, *prefix, *line; int shift; bool restore; const char* message; } kRefused[] = {
    {"zero range above the discharge tolerance", "p04 ", "p04 = 40", 0, true,
     "骨料1 [scale00.params] 零位范围: 零位范围不应大于卸料允许误差值!"},
    {"plant time below its range", "t1 ", "t1 = | 2", 0, true,
     "系统功能设定 [D215] 持续响铃时间: 请检查!时间设定的输入范围为：(3-60)S"},
    {"vibrator pause of nought", "vib00 ", "vib00 = 0", 0, true,
     "振动器振动时间设定 [D272] 骨料3振动器 计量振动间歇时间: 请检查!振动时间设定的输入范围为:(1-60)S"},
    {"sensor load above 300.00 kg", "load11 ", "load11 = 30001", 0, true,
     "传感器配置设定 [D200] 外加剂1: 请检查!传感器配置设定的输入范围为:(0-300kg)"},
    {"deceleration distance below 100", "decelUp ", "decelUp = 99", 0, true,
     "斗提位置标定 [D291] 上升提前减速脉冲数: 请检查!上升提前减速脉冲数的输入范围为:(100-2000)"},
    {"S500 against scale 0's options", "[S500]\nbits", "bits = 1", 0, true,
     "[S500] 与 [scale00.options] 是控制器中相同的位，两处的值必须一致。"},
    {"newer format", "format", "format 2", 0, false, "文件格式 2 比本程序能读的格式 1 新，请使用新版本的 orvaplccfg。"},
    {"no format line", "format", "formats 1", 0, false, "这不是配置文件：文件没有格式行。"},
    {"cut short", "decelDown", nullptr, -1, false, "文件在此结束，没有结束行\"end\"：文件不完整。"},
    {"word not a number", "p03 ", "p03 = 5x | 5", 0, false, "5x 不是控制器能保存的字（-32768 到 32767）。"},
    {"word beyond 16 bits", "load00 ", "load00 = 40000", 0, true, "40000 不是控制器能保存的字（-32768 到 32767）。"},
    {"word and shown value apart", "p13 ", "p13 = 350 | 300", 0, false,
     "字 350 显示为 350，而不是 300：请两处一起修改，或留空其中一处。"},
    {"shown value not a number", "p13 ", "p13 = | 3OO", 0, true, "3OO 不是“慢速配料值”的值。"},
    {"unknown word", "p13 ", "p99 = 1", 0, false, "数据块 [scale00.params] 中没有 p99。"},
    {"word missing", "p13 ", "# p13", -14, true, "数据块 [scale00.params] 缺少 p13（慢速配料值）。"},
    {"text after the end", "end", "end\r\nmore", 1, false, "文件结束行\"end\"之后还有内容。"},
};

const struct { const char* name; int neighbour; } kNeighbours[] = {
    {"next scale's first bit, third digit", 532},
    {"scale before's fifth bit, second digit", 520},
};

constexpr int kSlowMs = 60000;  // a sanitizer build starts slowly

// The rows run in order, as one session: commands to the controller first, whether another program holds the
// port, the arguments, the exit code, the output and the last line of standard error. A refused save writes
// no file.
const struct { const char *name, *setUp; bool held; const char* args; int exit; const char *out, *err; } kSession[] = {
    {"save", "", false, "save plant.cfg", 0, "", ""},
    {"two parameters and a sensor load restored", "set D355 80;set D358 300;set D203 450", false,
     "restore --yes plant.cfg", 0,
     "骨料4 [scale03.params] 落差调整值: 80 -> 60\n骨料4 [scale03.params] 慢速配料值: 300 -> 350\n"
     "传感器配置设定 [D200] 骨料4: 450 -> 500",
     "已写入：scale03.params, D200"},
    {"equal again, the port given by its device", "", false, "--port ttyPLC diff plant.cfg", 0, "", ""},
    {"port held by another program", "", true, "save other.cfg", 2, "", "Com2端口已被其它程序占用!请重新设置端口！"},
    {"port missing", "", false, "--port com5 save gone.cfg", 2, "", "Com5端口无效!请重新设置端口！"},
};
}  // namespace

class CfgTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QVERIFY(dir.isValid());
        link = dir.filePath(QStringLiteral("ttyPLC"));
        exe = dir.filePath(QStringLiteral("orvaplccfg"));
        QVERIFY(QFile::copy(QStringLiteral(ORVAPLCCFG_EXE), exe));
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("Data")));
        QVERIFY(TextFile::writeLines(dir.filePath(QStringLiteral("Data/ComPorts.ini")),
                                     {"[ComPorts]", "Com2=" + link, "Com5=" + dir.filePath("ttyGone")}));
        sim.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        sim.start(QStringLiteral(PLCSIM_EXE), {"--commissioned", "--control-stdin", "--no-live", "--link", link});
        QVERIFY(sim.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(sim.canReadLine(), kSlowMs);
        sim.readLine();
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(link).isSymLink(), kSlowMs);
    }
    void cleanupTestCase()
    {
        sim.write("quit\n");
        if (!sim.waitForFinished(kSlowMs))
            sim.kill();
    }

    void session_data() { TableRows(kSession); }
    void session()
    {
        const auto& c = TableRow(kSession);
        for (const QString& command : QString::fromLatin1(c.setUp).split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
            sim.write(command.toUtf8() + '\n');
            QTRY_VERIFY_WITH_TIMEOUT(sim.canReadLine(), kSlowMs);
            QCOMPARE(sim.readLine().trimmed(), QByteArray("ok"));
        }
        QSerialPort other(link);
        if (c.held)
            QVERIFY(other.open(QIODevice::ReadWrite));

        QProcess cfg;
        cfg.setWorkingDirectory(dir.path());
        cfg.start(exe, QString::fromLatin1(c.args).split(QLatin1Char(' ')));
        cfg.closeWriteChannel();
        QVERIFY(cfg.waitForFinished(kSlowMs));
        const QString stdErr = QString::fromUtf8(cfg.readAllStandardError()).trimmed();
        QCOMPARE(QString::fromUtf8(cfg.readAllStandardOutput()).trimmed(), QString::fromUtf8(c.out));
        QCOMPARE(stdErr.section(QLatin1Char('\n'), -1), QString::fromUtf8(c.err));
        QCOMPARE(cfg.exitCode(), c.exit);
        QVERIFY(!c.exit || !QFile::exists(dir.filePath(QString::fromLatin1(c.args).section(QLatin1Char(' '), -1))));
    }

    void saveChangeDiffRestore_data() { TableRows(kChanges); }
    void saveChangeDiffRestore()
    {
        const auto& c = TableRow(kChanges);
        Rig r;
        QCOMPARE(r.saved, int(kCfgOk));
        const QStringList first = r.lines();
        QCOMPARE(CfgSave(r.run, r.file), int(kCfgOk));
        QCOMPARE(r.lines().mid(4), first.mid(4));  // the same file, the date line apart
        QCOMPARE(rawBytes(r.file).left(3), QByteArray("\xEF\xBB\xBF"));
        QCOMPARE(first.value(first.size() - 2), QStringLiteral("end"));

        if (c.kind == 'S')
            r.h.sim.setSBit(c.device, c.value != 0);
        else
            r.h.sim.setWord(c.device, short(c.value));
        QCOMPARE(CfgDiff(r.run, r.file), int(kCfgDiffers));
        QCOMPARE(r.out, QString::fromUtf8(c.diff).split(QLatin1Char('\n')));
        r.h.takeFrames();
        QCOMPARE(CfgRestore(r.run, r.file), int(kCfgOk));
        QStringList writes;  // "1", byte address, byte count
        for (const QString& f : r.h.takeFrames())
            if (f.mid(1, 1) == QLatin1String("1"))
                writes << f.mid(1, 7);
        QCOMPARE(writes, QStringList{c.writes});
        r.out.clear();
        QCOMPARE(CfgDiff(r.run, r.file), int(kCfgOk));
        QCOMPARE(r.out, QStringList());
        QVERIFY2(r.err.last().startsWith(QStringLiteral("已写入：")), qPrintable(r.err.join(QLatin1Char('|'))));
    }

    // The bytes of a scale's options hold bits of the scales beside it. Changed by someone else between the
    // restore's first read and its write, they stay as that someone left them.
    void optionWriteKeepsNeighbours_data() { TableRows(kNeighbours); }
    void optionWriteKeepsNeighbours()
    {
        const int neighbour = TableRow(kNeighbours).neighbour;
        Rig r;
        r.h.sim.setSBit(525, true);
        int reads = 0;
        connect(&r.h.sim, &plcsim::Controller::requestReceived, &r.h.sim, [&](const QByteArray& frame) {
            if (frame.mid(1, 7) == "0004102" && ++reads == 2)
                r.h.sim.setSBit(neighbour, true);
        });
        QCOMPARE(CfgRestore(r.run, r.file), int(kCfgOk));
        QCOMPARE(reads, 3);  // the first read, the one right before the write, the read-back
        QCOMPARE(QList<bool>({r.h.sim.sBit(525), r.h.sim.sBit(neighbour)}), QList<bool>({false, true}));
    }

    void refusedBeforeAnythingIsSent_data() { TableRows(kRefused); }
    void refusedBeforeAnythingIsSent()
    {
        const auto& c = TableRow(kRefused);
        Rig r;
        r.h.sim.setWord(358, 300);  // something to restore
        const int n = r.lineOf(QString::fromUtf8(c.prefix)) + c.shift;
        r.edit(c.prefix, c.line);
        r.h.takeFrames();
        QCOMPARE(c.restore ? CfgRestore(r.run, r.file) : CfgDiff(r.run, r.file), int(kCfgError));
        QCOMPARE(r.err, QStringList{QStringLiteral("%1:%2: %3").arg(r.file).arg(n).arg(QString::fromUtf8(c.message))});
        QCOMPARE(r.h.takeFrames(), QStringList());
        QCOMPARE(r.h.sim.word(358), short(300));
    }

    // The controller stops answering at the second block's write: the restore says which blocks it has.
    void linkFaultMidRestore()
    {
        Rig r;
        r.h.sim.setWord(358, 300);
        r.h.sim.setWord(216, 55);
        r.h.sim.setWord(203, 450);
        connect(&r.h.sim, &plcsim::Controller::requestReceived, &r.h.sim, [&](const QByteArray& frame) {
            if (frame.mid(1, 7) == "111AE0C")
                r.h.sim.injectFault(plcsim::Fault::Unplugged);
        });
        QCOMPARE(CfgRestore(r.run, r.file), int(kCfgError));
        QCOMPARE(r.err, QStringList({LinkFaultText(QStringLiteral("Com2")), QStringLiteral("已写入：scale03.params"),
                                     QStringLiteral("未写入：D215, D200")}));
        QCOMPARE(r.h.sim.word(358), short(350));
        QCOMPARE(r.h.sim.word(203), short(450));
    }

private:
    QTemporaryDir dir;
    QString link, exe;
    QProcess sim;
};

QTEST_MAIN(CfgTest)
#include "cfg_test.moc"
