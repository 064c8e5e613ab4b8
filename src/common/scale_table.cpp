#include "common/scale_table.h"

#include "common/app_paths.h"
#include "common/error_log.h"
#include "common/module1.h"
#include "common/profile.h"
#include "common/text_file.h"
#include "common/vbtext.h"

#include <QFileInfo>
#include <QHash>
#include <QPair>
#include <QStringList>

#include <algorithm>

namespace {

struct ScaleDefault {
    const char* name;
    short decimals;
    short vibrator;
};
// Cement has no decimal while fly ash has one; 14 and 15 have no decimals set.
constexpr ScaleDefault kScaleDefaults[16] = {
    {"骨料1", 0, 0}, {"骨料2", 0, 0}, {"骨料3", 0, 1}, {"骨料4", 0, 1}, {"", 0, 1},        {"", 0, 1},
    {"", 1, 1},      {"水秤", 1, 1},  {"水泥", 0, 1},  {"粉灰", 1, 1},  {"", 1, 1},        {"外加剂1", 2, 0},
    {"外加剂2", 2, 0}, {"", 2, 0},    {"", 0, 0},      {"", 0, 0},
};

// The default water name stands at bin 8, and the admixtures at 18 and 19 are numbered by index plus one.
constexpr const char* kBinDefaults[22] = {
    "骨料1", "骨料2",  "骨料3",  "骨料4",  "",       "",       "", "", "水秤", "水泥M1",   "水泥M2",
    "水泥M3", "",      "粉灰M1", "粉灰M2", "",       "",       "", "外加剂19", "外加剂20", "",   "",
};

// Keys of the scales in section "Name": water takes "11" and what follows moves on.
constexpr const char* kScaleKeys[14] = {"01", "02", "03", "04", "05", "06", "07",
                                        "11", "08", "09", "10", "12", "13", "14"};

struct BinKey {
    const char* section;
    const char* key;
};
constexpr BinKey kBinKeys[22] = {
    {"01", "01"}, {"02", "01"}, {"03", "01"}, {"04", "01"}, {"05", "01"}, {"06", "01"},  // aggregate bins
    {"07", "01"}, {"07", "02"},                                                          // added powder
    {"11", "01"},                                                                        // water
    {"08", "01"}, {"08", "02"}, {"08", "03"}, {"08", "04"},                              // cement
    {"09", "01"}, {"09", "02"}, {"09", "03"},                                            // fly ash
    {"10", "01"}, {"10", "02"},                                                          // slag powder
    {"12", "01"}, {"13", "01"}, {"14", "01"},                                            // admixtures
    {"11", "02"},                                                                        // second water
};

// The seven calibration values of a scale in the order of their lines in BLZConfig.dat.
struct BiaoField {
    const char* keyword;
    std::array<QString, 16>* values;
};
const BiaoField kBiaoFields[7] = {
    {"BiaoZeroTime=", &BiaoZeroTime},           {"BiaoZeroADValue=", &BiaoZeroADValue},
    {"BiaoZeroWTValue=", &BiaoZeroWTValue},     {"BiaoWeightTime=", &BiaoWeightTime},
    {"BiaoWeightADValue=", &BiaoWeightADValue}, {"BiaoWeightWTValue=", &BiaoWeightWTValue},
    {"BiaoWeightFMValue=", &BiaoWeightFMValue},
};
constexpr int kNamedScales = 14;  // BLZConfig.dat and "Name" carry scales 0..13

QString u8(const char* text) { return QString::fromUtf8(text); }

// A "\Data\X" path: in the Data folder if there is one, otherwise in the application folder.
QString dataOrAppFile(const QString& name)
{
    if (QFileInfo(AppPaths::inApp(QStringLiteral("Data"))).isDir()) return AppPaths::inApp(QStringLiteral("Data/") + name);
    return AppPaths::inApp(name);
}

// The keys of BLZConfig.dat all end in "=", so the key a line begins with ends at one of its first "=".
// Each wanted key is found in one pass over the lines, however many keys and lines there are.
class KeyLines {
public:
    explicit KeyLines(const QStringList& keys)
    {
        for (const QString& k : keys) {
            wanted_.insert(k, {});
            longest_ = std::max(longest_, k.size());
        }
    }
    // Calls f(key, rest of the line) for each wanted key that begins the line.
    template <class F> void match(QStringView line, F&& f) const
    {
        const qsizetype limit = std::min(line.size(), longest_);
        for (qsizetype eq = line.left(limit).indexOf(u'='); eq >= 0; eq = line.left(limit).indexOf(u'=', eq + 1)) {
            const QStringView key = line.left(eq + 1);
            if (wanted_.contains(key.toString())) f(key, line.mid(eq + 1));
        }
    }
    bool wants(QStringView line) const
    {
        bool any = false;
        match(line, [&any](QStringView, QStringView) { any = true; });
        return any;
    }
    // ReadKeyLine for every key at once: the first line that begins with it.
    QHash<QString, QString> firstValues(const QStringList& lines) const
    {
        QHash<QString, QString> found;
        for (const QString& line : lines)
            match(line, [&found](QStringView key, QStringView rest) {
                const QString k = key.toString();
                if (!found.contains(k)) found.insert(k, Trim(rest.toString()));
            });
        return found;
    }

private:
    QHash<QString, QString> wanted_;
    qsizetype longest_ = 0;
};

// Every key SaveBLZConfig writes, in its order, with its value.
QList<QPair<QString, QString>> blzLines()
{
    QList<QPair<QString, QString>> lines;
    lines << qMakePair(QStringLiteral("COMPort="), QString::number(PortNo));
    lines << qMakePair(QStringLiteral("IsShowCsHelp="), ShowCsHelp);
    for (int i = 0; i < kNamedScales; ++i)
        for (const BiaoField& field : kBiaoFields) lines << qMakePair(ScaleName[i] + u8(field.keyword), (*field.values)[i]);
    lines << qMakePair(QStringLiteral("Agg1RecordMode="), Agg1RecordMode);
    return lines;
}

QStringList blzKeys()
{
    QStringList keys;
    for (const auto& [key, value] : blzLines()) keys << key;
    return keys;
}

}  // namespace

QString BLZConfigPath() { return dataOrAppFile(QStringLiteral("BLZConfig.dat")); }

QString SysDataPath() { return dataOrAppFile(QStringLiteral("SysData.dat")); }

QString CNameIniPath() { return AppPaths::inApp(QStringLiteral("Data/CName.ini")); }

// The file is named "\data\NetPath.ini" in lower case; Linux tells the cases apart, so both are tried.
QString NetPathIniPath()
{
    const QString upper = AppPaths::inApp(QStringLiteral("Data/NetPath.ini"));
    if (TextFile::exists(upper)) return upper;
    const QString lower = AppPaths::inApp(QStringLiteral("data/NetPath.ini"));
    if (TextFile::exists(lower)) return lower;
    return upper;
}

void SetDefaultNames()
{
    for (int i = 0; i < 16; ++i) {
        ScaleName[i] = u8(kScaleDefaults[i].name);
        ScaleDecimals[i] = kScaleDefaults[i].decimals;
        ScaleVibrator[i] = kScaleDefaults[i].vibrator;
    }
    for (int i = 0; i < 22; ++i) BinName[i] = u8(kBinDefaults[i]);
}

void LoadCNameIni()
{
    const QString file = CNameIniPath();
    if (!TextFile::exists(file)) {
        CNameMissing = true;
        return;
    }
    // Read once for all the names. A key that is there replaces the default even when it is empty; a key
    // that is not there leaves it.
    const auto index = ProfileIndex::load(file);
    for (int i = 0; i < kNamedScales; ++i)
        ScaleName[i] = Trim(ProfileIndex::read(index.get(), QStringLiteral("Name"), u8(kScaleKeys[i]), ScaleName[i]));
    for (int i = 0; i < 22; ++i)
        BinName[i] = Trim(ProfileIndex::read(index.get(), u8(kBinKeys[i].section), u8(kBinKeys[i].key), BinName[i]));
}

void LoadZDTimeIni()
{
    const QString file = CNameIniPath();
    if (!TextFile::exists(file)) return;
    const auto index = ProfileIndex::load(file);
    for (int i = 0; i < int(ScaleVibrator.size()); ++i) {
        const QString key = QStringLiteral("%1").arg(i + 1, 2, 10, QLatin1Char('0'));
        const QString text = ProfileIndex::read(index.get(), QStringLiteral("ZDTime"), key, NumText(ScaleVibrator[i]));
        try {
            ScaleVibrator[i] = CInt(Val(text));
        } catch (const VbError& e) {
            LogProgramError(QStringLiteral("Module1"), QStringLiteral("LoadZDTimeIni"), QString::number(e.number),
                            e.description());
            return;
        }
    }
}

void LoadBLZConfig()
{
    SetDefaultNames();
    LoadCNameIni();
    ShowCsHelp = QStringLiteral("1");
    ComPortSetting = 2;
    PortNo = ComPortSetting;
    const QString file = BLZConfigPath();
    QStringList lines;
    if (!TextFile::exists(file) || !TextFile::readLines(file, &lines)) return;

    const QHash<QString, QString> values = KeyLines(blzKeys()).firstValues(lines);
    try {
        ComPortSetting = CInt(Val(values.value(QStringLiteral("COMPort="))));
    } catch (const VbError& e) {
        LogProgramError(QStringLiteral("Module1"), QStringLiteral("LoadBLZConfig"), QString::number(e.number),
                        e.description());
        ComPortSetting = 0;
    }
    if (ComPortSetting == 0) ComPortSetting = 2;
    PortNo = ComPortSetting;
    const QString help = values.value(QStringLiteral("IsShowCsHelp="));
    if (!help.isEmpty()) ShowCsHelp = help;

    for (int i = 0; i < kNamedScales; ++i)
        for (const BiaoField& field : kBiaoFields)
            (*field.values)[i] = values.value(ScaleName[i] + u8(field.keyword));
    Agg1RecordMode = NumText(Val(values.value(QStringLiteral("Agg1RecordMode="))));
}

void SaveBLZConfig()
{
    const QList<QPair<QString, QString>> own = blzLines();
    QStringList lines;
    QStringList keys;
    for (const auto& [key, value] : own) {
        lines << key + value;
        keys << key;
    }
    // The values of scales that go by other names this run (a names file that could not be read, a
    // rename) stay behind ours, so that nothing once stored is lost; a reader takes our lines first.
    QStringList old;
    if (TextFile::readLines(BLZConfigPath(), &old)) {
        const KeyLines ours(keys);
        for (const QString& line : old)
            if (!line.trimmed().isEmpty() && !ours.wants(line)) lines << line;
    }
    // The old file stays whole when the new one cannot be written; the log tells why.
    FileError e;
    if (!TextFile::writeLines(BLZConfigPath(), lines, &e))
        LogProgramError(QStringLiteral("Module1"), QStringLiteral("SaveBLZConfig"), QString::number(e.number), e.logText());
}

void LoadSysData()
{
    const QString file = SysDataPath();
    if (!TextFile::exists(file)) return;
    OperatorName = ReadKeyLine(file, QStringLiteral("UserNam:"));
}

QString ReadNetPath() { return ReadKeyLine(NetPathIniPath(), QStringLiteral("NetworkPath=")); }

QString ScaleNameKey(int i) { return i >= 0 && i < kNamedScales ? u8(kScaleKeys[i]) : QString(); }

QString BinNameSection(int i) { return i >= 0 && i < 22 ? u8(kBinKeys[i].section) : QString(); }

QString BinNameKey(int i) { return i >= 0 && i < 22 ? u8(kBinKeys[i].key) : QString(); }
