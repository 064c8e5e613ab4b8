#include "cfg/snapshot.h"

#include "cfg/cfg_text.h"
#include "common/text_file.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>

namespace Snapshot {

namespace {

constexpr char kBom[] = "\xEF\xBB\xBF";

QString two(int n) { return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0')); }

// The words a field may hold: a bit group is the four digits of two bytes, a register is signed 16 bits.
int lowest(const BlockField& f) { return f.mask ? 0 : -32768; }
int highest(const BlockField& f) { return f.mask ? 0xFFFF : 32767; }

// The scale and bin names, by their key in the names section.
QString nameKey(bool scale, int i) { return (scale ? QStringLiteral("scale") : QStringLiteral("bin")) + two(i); }

class Reader {
public:
    Reader(const QList<BlockLayout>& layouts, File* f, Fault* fault) : layouts_(layouts), f_(f), fault_(fault) {}

    bool run(const QString& text)
    {
        static const QRegularExpression lineEnd(QStringLiteral("\r\n|\n|\r"));
        QStringList lines = text.split(lineEnd);
        // The last line end leaves an empty piece that is no line of the file.
        if (!lines.isEmpty() && lines.last().isEmpty())
            lines.removeLast();
        for (int i = 0; i < lines.size(); ++i) {
            n_ = i + 1;
            const QString line = lines[i].trimmed();
            if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
                continue;
            if (ended_)
                return fail(CfgText("CFG010", "文件结束行\"end\"之后还有内容。"));
            if (!take(line))
                return false;
        }
        if (!ended_) {
            n_ = int(lines.size());
            return fail(f_->format == 0 ? CfgText("CFG011", "这不是配置文件：文件没有格式行。")
                                        : CfgText("CFG012", "文件在此结束，没有结束行\"end\"：文件不完整。"));
        }
        return true;
    }

private:
    bool fail(const QString& text)
    {
        *fault_ = {n_, text};
        return false;
    }

    bool take(const QString& line)
    {
        if (f_->format == 0)
            return takeFormat(line);
        if (line.startsWith(QLatin1Char('[')))
            return closeBlock() && openSection(line);
        if (line == QLatin1String("end")) {
            ended_ = true;
            return closeBlock();
        }
        if (section_ == Section::Header)
            return takeHeader(line);
        const qsizetype eq = line.indexOf(QLatin1Char('='));
        if (eq < 0)
            return fail(CfgText("CFG013", "无法识别这一行。"));
        const QString key = line.left(eq).trimmed();
        const QString value = line.mid(eq + 1).trimmed();
        return section_ == Section::Names ? takeName(key, value) : takeWord(key, value);
    }

    bool takeFormat(const QString& line)
    {
        static const QRegularExpression format(QStringLiteral("^format\\s+(\\d+)$"));
        const QRegularExpressionMatch m = format.match(line);
        if (!m.hasMatch())
            return fail(CfgText("CFG011", "这不是配置文件：文件没有格式行。"));
        const int version = m.captured(1).toInt();
        if (version > kFormat)
            return fail(CfgText("CFG014", "文件格式 %1 比本程序能读的格式 %2 新，请使用新版本的 orvaplccfg。")
                            .arg(version)
                            .arg(kFormat));
        if (version < 1)
            return fail(CfgText("CFG011", "这不是配置文件：文件没有格式行。"));
        f_->format = version;
        return true;
    }

    bool takeHeader(const QString& line)
    {
        const QString key = line.section(QLatin1Char(' '), 0, 0);
        const QString value = line.section(QLatin1Char(' '), 1).trimmed();
        if (key == QLatin1String("date"))
            f_->date = value;
        else if (key == QLatin1String("port"))
            f_->port = value;
        else if (key == QLatin1String("language"))
            f_->language = value.toInt();
        else
            return fail(CfgText("CFG013", "无法识别这一行。"));
        return true;
    }

    bool openSection(const QString& line)
    {
        const qsizetype close = line.indexOf(QLatin1Char(']'));
        const QString id = line.mid(1, close - 1).trimmed();
        if (close < 0 || id.isEmpty())
            return fail(CfgText("CFG013", "无法识别这一行。"));
        if (id == QLatin1String("names")) {
            section_ = Section::Names;
            return true;
        }
        const auto it = std::find_if(layouts_.begin(), layouts_.end(), [&](const BlockLayout& l) { return l.id == id; });
        if (it == layouts_.end())
            return fail(CfgText("CFG015", "没有名为 [%1] 的数据块。").arg(id));
        if (f_->find(id))
            return fail(CfgText("CFG016", "数据块 [%1] 出现了两次。").arg(id));
        section_ = Section::Block;
        layout_ = &*it;
        block_ = Block{id, QList<int>(it->fields.size(), 0), n_, QList<int>(it->fields.size(), 0)};
        return true;
    }

    bool takeName(const QString& key, const QString& value)
    {
        static const QRegularExpression name(QStringLiteral("^(scale|bin)(\\d\\d)$"));
        const QRegularExpressionMatch m = name.match(key);
        QStringList* names = m.captured(1) == QLatin1String("scale") ? &f_->scaleNames : &f_->binNames;
        const int i = m.captured(2).toInt();
        if (!m.hasMatch() || i >= names->size())
            return fail(CfgText("CFG013", "无法识别这一行。"));
        (*names)[i] = value;
        return true;
    }

    bool takeWord(const QString& key, const QString& value)
    {
        const auto& fields = layout_->fields;
        const auto it = std::find_if(fields.begin(), fields.end(), [&](const BlockField& f) { return f.key == key; });
        if (it == fields.end())
            return fail(CfgText("CFG017", "数据块 [%1] 中没有 %2。").arg(block_.id, key));
        const int k = int(it - fields.begin());
        if (block_.lines[k] != 0)
            return fail(CfgText("CFG018", "%1 在数据块 [%2] 中出现了两次。").arg(key, block_.id));
        const BlockField& f = *it;
        const QString wordText = value.section(QLatin1Char('|'), 0, 0).trimmed();
        const QString shownText = value.section(QLatin1Char('|'), 1, 1).trimmed();
        static const QRegularExpression integer(QStringLiteral("^-?\\d{1,6}$"));
        int raw = 0;
        if (!wordText.isEmpty()) {
            raw = wordText.toInt();
            if (!integer.match(wordText).hasMatch() || raw < lowest(f) || raw > highest(f))
                return fail(CfgText("CFG019", "%1 不是控制器能保存的字（%2 到 %3）。")
                                .arg(wordText)
                                .arg(lowest(f))
                                .arg(highest(f)));
            int fromShown = 0;
            if (!shownText.isEmpty() && shownText != ::Block::shown(f, raw) &&
                !(::Block::toRaw(f, shownText, &fromShown) && fromShown == raw))
                return fail(CfgText("CFG020", "字 %1 显示为 %2，而不是 %3：请两处一起修改，或留空其中一处。")
                                .arg(wordText, ::Block::shown(f, raw), shownText));
        } else if (shownText.isEmpty()) {
            return fail(CfgText("CFG021", "%1 没有值。").arg(key));
        } else if (!::Block::toRaw(f, shownText, &raw)) {
            return fail(CfgText("CFG022", "%1 不是“%2”的值。").arg(shownText, f.caption));
        }
        block_.raw[k] = raw;
        block_.lines[k] = n_;
        return true;
    }

    // Every word of a block stands in the file.
    bool closeBlock()
    {
        if (section_ != Section::Block)
            return true;
        section_ = Section::None;
        for (int k = 0; k < block_.lines.size(); ++k) {
            if (block_.lines[k] == 0) {
                n_ = block_.line;
                const BlockField& f = layout_->fields[k];
                return fail(CfgText("CFG023", "数据块 [%1] 缺少 %2（%3）。").arg(block_.id, f.key, f.caption));
            }
        }
        f_->blocks << block_;
        return true;
    }

    enum class Section { Header, Names, Block, None };
    const QList<BlockLayout>& layouts_;
    File* f_;
    Fault* fault_;
    int n_ = 0;
    Section section_ = Section::Header;
    const BlockLayout* layout_ = nullptr;
    Block block_;
    bool ended_ = false;
};

}  // namespace

const Block* File::find(const QString& id) const
{
    const auto it = std::find_if(blocks.begin(), blocks.end(), [&](const Block& b) { return b.id == id; });
    return it == blocks.end() ? nullptr : &*it;
}

QByteArray write(const File& f, const QList<BlockLayout>& layouts)
{
    QStringList out;
    out << QStringLiteral("# ") + CfgText("CFG001", "秤控台配置：控制器中保存的全部设定。") << QStringLiteral("# ") +
               CfgText("CFG002", "每行第一个数是控制器中保存的字，后面是窗体显示的值和窗体上的名称。");
    out << QStringLiteral("format %1").arg(kFormat) << QStringLiteral("date ") + f.date
        << QStringLiteral("port ") + f.port << QStringLiteral("language %1").arg(f.language) << QString();
    out << QStringLiteral("[names]");
    for (int i = 0; i < f.scaleNames.size(); ++i)
        out << QStringLiteral("%1 = %2").arg(nameKey(true, i), f.scaleNames[i]).trimmed();
    for (int i = 0; i < f.binNames.size(); ++i)
        out << QStringLiteral("%1 = %2").arg(nameKey(false, i), f.binNames[i]).trimmed();
    for (const BlockLayout& l : layouts) {
        const Block* b = f.find(l.id);
        if (!b)
            continue;
        QStringList shown;
        qsizetype keyWidth = 0, shownWidth = 0;
        for (int k = 0; k < l.fields.size(); ++k) {
            shown << ::Block::shown(l.fields[k], b->raw.value(k));
            keyWidth = std::max(keyWidth, l.fields[k].key.size());
            shownWidth = std::max(shownWidth, shown.last().size());
        }
        out << QString() << QStringLiteral("[%1] %2 %3").arg(l.id, l.title, l.device);
        for (int k = 0; k < l.fields.size(); ++k)
            out << QStringLiteral("%1 = %2 | %3 | %4")
                       .arg(l.fields[k].key.leftJustified(keyWidth), QString::number(b->raw.value(k)).rightJustified(6),
                            shown[k].leftJustified(shownWidth), l.fields[k].caption)
                       .trimmed();
    }
    out << QString() << QStringLiteral("end");
    return QByteArray(kBom) + TextFile::encodeAs(out.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n"),
                                                 TextFile::Encoding::Utf8);
}

bool read(const QByteArray& bytes, const QList<BlockLayout>& layouts, File* f, Fault* fault)
{
    *f = File{};
    f->format = 0;  // until the format line is read
    f->scaleNames = QStringList(14);
    f->binNames = QStringList(22);
    return Reader(layouts, f, fault).run(TextFile::decode(bytes));
}

QString where(const QString& path, int line, const QString& text)
{
    return line > 0 ? QStringLiteral("%1:%2: %3").arg(path).arg(line).arg(text) : QStringLiteral("%1: %2").arg(path, text);
}

bool load(const QString& path, const QList<BlockLayout>& layouts, File* f, QString* message)
{
    QByteArray bytes;
    if (!TextFile::exists(path) || !TextFile::readBytes(path, &bytes)) {
        *message = where(path, 0, CfgText("CFG024", "无法读取文件。"));
        return false;
    }
    Fault fault;
    if (!read(bytes, layouts, f, &fault)) {
        *message = where(path, fault.line, fault.text);
        return false;
    }
    f->path = path;
    return true;
}

}  // namespace Snapshot
