// orvaplccfg: every setting of the plant's controller to a file, compared and restored. Installed beside
// the console, it finds the port, the names and the language as the console does.
#include "cfg/cfg_commands.h"
#include "cfg/cfg_text.h"
#include "cfg/progress.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>
#include <iostream>
#include <string>
#include <unistd.h>

namespace {

void say(std::FILE* to, const QString& line)
{
    std::fputs((line + QLatin1Char('\n')).toUtf8().constData(), to);
    std::fflush(to);
}

// A subcommand: its name, how many files it takes, its line of the help and what it runs.
struct Subcommand {
    const char* name;
    int least;
    int most;
    const char* args;
    const char* helpKey;
    const char* help;
    int (*run)(const CfgRun& run, const QStringList& files);
};

const Subcommand kSubcommands[] = {
    {"save", 1, 1, "FILE", "CFG050", "读取控制台编辑的全部数据块，保存到文件",
     [](const CfgRun& r, const QStringList& f) { return CfgSave(r, f[0]); }},
    {"diff", 1, 2, "FILE [FILE2]", "CFG051", "文件与控制器当前的值比较，或两个文件比较：每个不同的值一行",
     [](const CfgRun& r, const QStringList& f) { return CfgDiff(r, f[0], f.value(1)); }},
    {"restore", 1, 1, "FILE", "CFG052", "显示不同之处，询问后写入不同的数据块，并逐块读回核对",
     [](const CfgRun& r, const QStringList& f) { return CfgRestore(r, f[0]); }},
    {"records", 0, 0, "", "CFG068", "把标秤记录以CSV格式（无字节顺序标记，CRLF行尾）输出到标准输出",
     [](const CfgRun& r, const QStringList&) { return CfgRecords(r); }},
};

void help()
{
    say(stdout, CfgText("CFG053", "用法：orvaplccfg [选项] 命令 文件..."));
    say(stdout, CfgText("CFG054", "保存、比较和恢复搅拌站控制器的全部设定。"));
    say(stdout, QString());
    say(stdout, CfgText("CFG055", "命令："));
    for (const Subcommand& c : kSubcommands)
        say(stdout, QStringLiteral("  %1 %2").arg(QLatin1String(c.name), QLatin1String(c.args)).leftJustified(24) +
                        CfgText(c.helpKey, c.help));
    say(stdout, QString());
    say(stdout, CfgText("CFG056", "选项："));
    say(stdout, QStringLiteral("  -p, --port PORT").leftJustified(24) +
                    CfgText("CFG057", "端口：Com1 到 Com6（见 Data/ComPorts.ini）或设备路径；默认为控制台的端口"));
    say(stdout, QStringLiteral("  -y, --yes").leftJustified(24) + CfgText("CFG058", "恢复时不询问"));
    say(stdout, QStringLiteral("  --from YYYY-MM").leftJustified(24) + CfgText("CFG069", "records：从该月起（含）"));
    say(stdout, QStringLiteral("  --to YYYY-MM").leftJustified(24) + CfgText("CFG070", "records：到该月止（含）"));
    say(stdout, QStringLiteral("  --scale NAME").leftJustified(24) + CfgText("CFG071", "records：只输出该秤的记录"));
    say(stdout, QStringLiteral("  -h, --help").leftJustified(24) + CfgText("CFG059", "显示本帮助后退出"));
    say(stdout, QStringLiteral("  -V, --version").leftJustified(24) + CfgText("CFG060", "显示版本后退出"));
    say(stdout, QString());
    say(stdout, CfgText("CFG061", "退出状态：0 完成或没有不同；1 有不同（diff）或未同意恢复；2 出错。"));
}

[[noreturn]] void usageError(const QString& text)
{
    say(stderr, QStringLiteral("orvaplccfg: ") + text);
    say(stderr, CfgText("CFG062", "请用 \"orvaplccfg --help\" 查看用法。"));
    std::exit(kCfgError);
}

bool askOnTerminal(const QString& question)
{
    std::fputs((question + QLatin1Char(' ') + CfgText("CFG063", "[y/N]") + QLatin1Char(' ')).toUtf8().constData(),
               stderr);
    std::fflush(stderr);
    std::string answer;
    const bool got = bool(std::getline(std::cin, answer));
    // An answer from a pipe is not echoed: the next message starts on a line of its own all the same.
    if (::isatty(STDIN_FILENO) != 1)
        std::fputs("\n", stderr);
    if (!got)
        return false;
    const QString a = QString::fromStdString(answer).trimmed().toLower();
    return a == QLatin1String("y") || a == QLatin1String("yes") || a == QStringLiteral("是");
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("orvaplccfg"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ORVA_VERSION));
    CfgPrepare();

    CfgRun run;
    QStringList positional;
    const QStringList args = app.arguments().mid(1);
    for (int i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        if (a == QLatin1String("--")) {
            positional += args.mid(i + 1);
            break;
        }
        if (a == QLatin1String("-h") || a == QLatin1String("--help")) {
            help();
            return kCfgOk;
        }
        if (a == QLatin1String("-V") || a == QLatin1String("--version")) {
            say(stdout, QStringLiteral("orvaplccfg ") + QCoreApplication::applicationVersion());
            return kCfgOk;
        }
        if (a == QLatin1String("-y") || a == QLatin1String("--yes")) {
            run.yes = true;
        } else if (a == QLatin1String("-p") || a == QLatin1String("--port")) {
            if (i + 1 >= args.size())
                usageError(CfgText("CFG064", "选项 %1 需要一个端口。").arg(a));
            run.port = args[++i];
        } else if (a.startsWith(QLatin1String("--port="))) {
            run.port = a.mid(7);
        } else if (a == QLatin1String("--from") || a == QLatin1String("--to") || a == QLatin1String("--scale")) {
            if (i + 1 >= args.size())
                usageError(CfgText("CFG072", "选项 %1 需要一个值。").arg(a));
            QString& value = a == QLatin1String("--from") ? run.from : a == QLatin1String("--to") ? run.to : run.scale;
            value = args[++i];
        } else if (a.startsWith(QLatin1Char('-')) && a.size() > 1) {
            usageError(CfgText("CFG065", "未知的选项 %1。").arg(a));
        } else {
            positional << a;
        }
    }
    if (positional.isEmpty())
        usageError(CfgText("CFG066", "缺少命令。"));
    const QString name = positional.takeFirst();
    const Subcommand* command = nullptr;
    for (const Subcommand& c : kSubcommands)
        if (name == QLatin1String(c.name))
            command = &c;
    if (!command)
        usageError(CfgText("CFG067", "未知的命令 %1。").arg(name));
    if (positional.size() < command->least || positional.size() > command->most)
        usageError(QStringLiteral("%1 %2").arg(QLatin1String(command->name), QLatin1String(command->args)));

    TerminalProgress bar;
    run.out = [](const QString& line) { say(stdout, line); };
    run.err = [&bar](const QString& line) {
        bar.show(QString(), 1, 1);
        say(stderr, line);
    };
    run.ask = [&bar](const QString& question) {
        bar.show(QString(), 1, 1);
        return askOnTerminal(question);
    };
    run.progress = [&bar](const QString& what, int done, int total) { bar.show(what, done, total); };
    return command->run(run, positional);
}
