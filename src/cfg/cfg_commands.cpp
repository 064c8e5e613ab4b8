#include "cfg/cfg_commands.h"

#include "calibration/records_csv.h"

#include <QFile>

#include "cfg/cfg_text.h"
#include "cfg/plant_link.h"
#include "cfg/snapshot.h"
#include "common/error_log.h"
#include "common/lang.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "common/text_file.h"
#include "link/comm_port.h"
#include "plant/plant_blocks.h"

#include <QDateTime>
#include <QFileInfo>
#include <QRegularExpression>

#include <memory>

namespace {

bool isBitGroup(const BlockField& f) { return f.mask != 0; }

// A bit group shows its own digits; those of the devices beside it are "-".
QString shownForPeople(const BlockField& f, int raw)
{
    QString text = Block::shown(f, raw);
    if (isBitGroup(f))
        for (int d = 0; d < 4; ++d)
            if (((f.mask >> (12 - 4 * d)) & 0xF) == 0)
                text[d] = QLatin1Char('-');
    return text;
}

bool sameValue(const BlockField& f, int a, int b)
{
    const int mask = isBitGroup(f) ? f.mask : ~0;
    return (a & mask) == (b & mask);
}

// "骨料4 [scale03.params] 慢速配料值"
QString nameOf(const BlockLayout& l, const BlockField& f)
{
    QString caption = f.caption;
    while (caption.endsWith(QLatin1Char(':')) || caption.endsWith(QChar(0xFF1A)))
        caption.chop(1);
    return QStringLiteral("%1 [%2] %3").arg(l.title, l.id, caption);
}

// One line per value that differs, in the order of the file.
// A block only one side has is named by the other side's path.
QStringList differences(const QList<BlockLayout>& layouts, const Snapshot::File& a, const Snapshot::File& b)
{
    QStringList lines;
    for (const BlockLayout& l : layouts) {
        const Snapshot::Block* x = a.find(l.id);
        const Snapshot::Block* y = b.find(l.id);
        if (!x && !y)
            continue;
        if (!x || !y) {
            lines << QStringLiteral("%1 [%2]: ").arg(l.title, l.id) +
                         CfgText("CFG030", "只在 %1 中").arg(x ? a.path : b.path);
            continue;
        }
        for (int k = 0; k < l.fields.size(); ++k) {
            const BlockField& f = l.fields[k];
            const int u = x->raw.value(k), v = y->raw.value(k);
            if (sameValue(f, u, v))
                continue;
            QString from = shownForPeople(f, u), to = shownForPeople(f, v);
            // The form rounds some words it shows: the words themselves tell them apart.
            if (from == to) {
                from += QStringLiteral(" (%1)").arg(u);
                to += QStringLiteral(" (%1)").arg(v);
            }
            lines << QStringLiteral("%1: %2 -> %3").arg(nameOf(l, f), from, to);
        }
    }
    return lines;
}

class OpenLine {
public:
    // The port as the console finds it: a number through Data/ComPorts.ini, or a device path.
    bool open(const CfgRun& run)
    {
        static const QRegularExpression number(QStringLiteral("^(?:[Cc][Oo][Mm])?(\\d{1,3})$"));
        const QRegularExpressionMatch m = number.match(run.port.trimmed());
        const int portNo = run.port.trimmed().isEmpty() ? PortNo : m.hasMatch() ? m.captured(1).toInt() : 0;
        // A device path as given; one that names a file here is taken from here, not from /dev.
        const QFileInfo device(run.port.trimmed());
        name = portNo > 0 ? QStringLiteral("Com%1").arg(portNo)
                          : device.exists() ? device.absoluteFilePath() : run.port.trimmed();
        port.reset(portNo > 0 ? MakePort(portNo) : new SerialCommPort(name));
        const PortOpenResult r = port->open();
        if (r.error == PortOpenError::None)
            return true;
        const QString plc = QStringLiteral("LANPLCFORM");
        switch (r.error) {
        case PortOpenError::InUse:
            run.err(name + LangText(plc, QStringLiteral("PLC011"), QStringLiteral("端口已被其它程序占用!请重新设置端口！")));
            break;
        case PortOpenError::Missing:
            run.err(name + LangText(plc, QStringLiteral("PLC012"), QStringLiteral("端口无效!请重新设置端口！")));
            break;
        default:
            run.err(r.description);
        }
        // The log keeps the port's own number and words, as the console's does.
        LogProgramError(QStringLiteral("orvaplccfg"), QStringLiteral("OpenPort"), QString::number(r.number),
                        r.systemText.isEmpty() ? r.description : r.systemText);
        port.reset();
        return false;
    }
    ~OpenLine()
    {
        if (port)
            port->close();
    }

    std::unique_ptr<CommPort> port;
    QString name;
};

void progress(const CfgRun& run, const QString& what, int done, int total)
{
    if (run.progress)
        run.progress(what, done, total);
}

// Every block of `from`'s list read from the controller into `to`; false after a link fault, said.
bool readBlocks(const CfgRun& run, PlantLink& link, const QString& portName, const QList<BlockLayout>& layouts,
                Snapshot::File* to)
{
    const QString reading = CfgText("CFG031", "读取");
    for (int i = 0; i < layouts.size(); ++i) {
        progress(run, reading, i, int(layouts.size()));
        Snapshot::Block b{layouts[i].id, {}, 0, {}};
        if (!link.read(layouts[i], &b.raw)) {
            progress(run, reading, int(layouts.size()), int(layouts.size()));
            run.err(LinkFaultText(portName));
            return false;
        }
        to->blocks << b;
    }
    progress(run, reading, int(layouts.size()), int(layouts.size()));
    return true;
}

// The layouts of the blocks a file holds, in its order.
QList<BlockLayout> layoutsIn(const QList<BlockLayout>& all, const Snapshot::File& f)
{
    QList<BlockLayout> list;
    for (const BlockLayout& l : all)
        if (f.find(l.id))
            list << l;
    return list;
}

bool loadFile(const CfgRun& run, const QString& path, const QList<BlockLayout>& layouts, Snapshot::File* f)
{
    QString message;
    if (Snapshot::load(path, layouts, f, &message))
        return true;
    run.err(message);
    return false;
}

// The editors' rules on every block of the file, before anything goes to the controller.
bool judge(const CfgRun& run, const QList<BlockLayout>& layouts, const Snapshot::File& f)
{
    for (const BlockLayout& l : layouts) {
        const Snapshot::Block* b = f.find(l.id);
        const BlockFault fault = Blocks::check(l.id, b->raw);
        if (!fault.ok()) {
            const int field = std::clamp(fault.field, 0, int(l.fields.size()) - 1);
            run.err(Snapshot::where(f.path, b->lines.value(field, b->line),
                                    nameOf(l, l.fields[field]) + QStringLiteral(": ") + fault.message));
            return false;
        }
    }
    // Two blocks on the same bits of the controller (scale 0's options and S500) must say the same.
    for (int i = 0; i < layouts.size(); ++i)
        for (int j = i + 1; j < layouts.size(); ++j) {
            const BlockLayout &a = layouts[i], &b = layouts[j];
            if (a.device != b.device || !isBitGroup(a.fields[0]) || !isBitGroup(b.fields[0]))
                continue;
            const int mask = a.fields[0].mask & b.fields[0].mask;
            const Snapshot::Block *x = f.find(a.id), *y = f.find(b.id);
            if ((x->raw[0] & mask) != (y->raw[0] & mask)) {
                run.err(Snapshot::where(f.path, y->lines[0],
                                        CfgText("CFG032", "[%1] 与 [%2] 是控制器中相同的位，两处的值必须一致。")
                                            .arg(b.id, a.id)));
                return false;
            }
        }
    return true;
}

QStringList idsOf(const QList<BlockLayout>& layouts)
{
    QStringList ids;
    for (const BlockLayout& l : layouts)
        ids << l.id;
    return ids;
}

QString listText(const QStringList& ids) { return ids.isEmpty() ? QStringLiteral("-") : ids.join(QStringLiteral(", ")); }

}  // namespace

void CfgPrepare()
{
    LoadBLZConfig();
    LoadLanguageChoice();
}

int CfgSave(const CfgRun& run, const QString& file)
{
    const QList<BlockLayout> layouts = Blocks::all();
    OpenLine line;
    if (!line.open(run))
        return kCfgError;
    PlantLink link(line.port.get());
    Snapshot::File f;
    f.date = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    f.port = line.name;
    f.language = LangNo;
    f.scaleNames = QStringList(ScaleName.begin(), ScaleName.begin() + 14);
    f.binNames = QStringList(BinName.begin(), BinName.end());
    if (!readBlocks(run, link, line.name, layouts, &f))
        return kCfgError;
    if (!TextFile::writeBytes(file, Snapshot::write(f, layouts))) {
        run.err(Snapshot::where(file, 0, CfgText("CFG033", "无法写入文件。")));
        return kCfgError;
    }
    return kCfgOk;
}

int CfgDiff(const CfgRun& run, const QString& file, const QString& file2)
{
    const QList<BlockLayout> all = Blocks::all();
    Snapshot::File a, b;
    if (!loadFile(run, file, all, &a))
        return kCfgError;
    if (!file2.isEmpty()) {
        if (!loadFile(run, file2, all, &b))
            return kCfgError;
    } else {
        OpenLine line;
        if (!line.open(run))
            return kCfgError;
        PlantLink link(line.port.get());
        if (!readBlocks(run, link, line.name, layoutsIn(all, a), &b))
            return kCfgError;
        b.path = line.name;
    }
    const QStringList lines = differences(all, a, b);
    for (const QString& l : lines)
        run.out(l);
    return lines.isEmpty() ? kCfgOk : kCfgDiffers;
}

int CfgRestore(const CfgRun& run, const QString& file)
{
    const QList<BlockLayout> all = Blocks::all();
    Snapshot::File wanted;
    if (!loadFile(run, file, all, &wanted))
        return kCfgError;
    const QList<BlockLayout> layouts = layoutsIn(all, wanted);
    if (!judge(run, layouts, wanted))
        return kCfgError;

    OpenLine line;
    if (!line.open(run))
        return kCfgError;
    PlantLink link(line.port.get());
    Snapshot::File now;
    if (!readBlocks(run, link, line.name, layouts, &now))
        return kCfgError;
    // What the restore changes: the controller's value now, then the file's.
    now.path = line.name;
    for (const QString& l : differences(all, now, wanted))
        run.out(l);

    QList<BlockLayout> toWrite;
    for (const BlockLayout& l : layouts) {
        const QList<int>& want = wanted.find(l.id)->raw;
        const QList<int>& is = now.find(l.id)->raw;
        if (!WrittenWordsEqual(l, want, is))
            toWrite << l;
        for (int k = 0; k < l.fields.size(); ++k)
            if (!l.fields[k].written && !sameValue(l.fields[k], want[k], is[k]))
                run.err(nameOf(l, l.fields[k]) + QStringLiteral(": ") +
                        CfgText("CFG034", "不写入，保留控制器中的值"));
    }
    if (toWrite.isEmpty()) {
        run.err(CfgText("CFG035", "没有需要写入的数据块。"));
        return kCfgOk;
    }
    if (!run.yes &&
        !run.ask(CfgText("CFG036", "将 %1 个数据块写入 %2 上的控制器吗？").arg(toWrite.size()).arg(line.name))) {
        run.err(CfgText("CFG037", "未写入任何数据。"));
        return kCfgDeclined;
    }

    const QString writing = CfgText("CFG038", "写入");
    QStringList written;
    for (int i = 0; i < toWrite.size(); ++i) {
        const BlockLayout& l = toWrite[i];
        progress(run, writing, i, int(toWrite.size()));
        const PlantLink::Written w = link.write(l, wanted.find(l.id)->raw);
        if (w != PlantLink::Written::Done) {
            progress(run, writing, int(toWrite.size()), int(toWrite.size()));
            run.err(w == PlantLink::Written::LinkFault
                        ? LinkFaultText(line.name)
                        : CfgText("CFG039", "[%1] 写入后读回的值不同：控制器没有接受。").arg(l.id));
            run.err(CfgText("CFG040", "已写入：%1").arg(listText(written)));
            run.err(CfgText("CFG041", "未写入：%1").arg(listText(idsOf(toWrite.mid(i)))));
            return kCfgError;
        }
        written << l.id;
    }
    progress(run, writing, int(toWrite.size()), int(toWrite.size()));
    run.err(CfgText("CFG040", "已写入：%1").arg(listText(written)));
    return kCfgOk;
}

int CfgRecords(const CfgRun& run)
{
    QFile out;
    if (!out.open(stdout, QIODevice::WriteOnly)) {
        run.err(CfgText("CFG033", "文件无法写入。"));
        return kCfgError;
    }
    const QString error = PrintRecordsCsv(run.from, run.to, run.scale, out);
    out.close();
    if (!error.isEmpty()) {
        run.err(error);
        return kCfgError;
    }
    return kCfgOk;
}
