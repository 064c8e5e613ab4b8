// The files of the application folder: shared text files and profiles, Windows paths, hidden folders, the error
// log, the scale table in BLZConfig.dat and the names in CName.ini, whole or damaged.
#include "common_test_util.h"

#include "common/error_log.h"
#include "common/scale_table.h"

#include <QRegularExpression>

#include <functional>
#include <sys/stat.h>
#include <unistd.h>

namespace {
QByteArray gb(const QString& text) { return TextFile::encode(text); }
const QByteArray kNoFile = "<none>";

// The file's bytes, where to look (no section: the reader of a line that begins with the key), the value
// read, or written and read back, the bytes after the write (none: no write), the default.
struct Case { const char* name; QByteArray bytes; QString section, key, value; QByteArray after{};
              QString deflt = "d"; };
const QByteArray kCName = gb("[Name]\r\n01=骨料A\r\n02=砂\r\n[ZDTime]\r\n01=3\r\n");
const QByteArray kBlz = gb("COMPort=3\r\nBiaoZeroTime=first\r\nBiaoZeroTime=second\r\nUserNam:  张三  \r\n");
const QByteArray kLongLines = rawBytes(fixture("CName_longlines.ini")), kUtf8Ini = rawBytes(fixture("utf8_bom.ini"));
const QByteArray kForeign = "; comment\r\njunk line\n[Name]\r\n01=a\r\n; inner\r\n02 = b \r\n\r\n[Other]\nx=1\n";
const QByteArray kJunk("\x00\xff\x81\r\n[S]\r\nk=1\r\n\xfe", 16);
const Case kProfile[] = {
    {"second section", kCName, "ZDTime", "01", "3"},
    {"section without case", kCName, "NAME", "02", "砂"},
    {"key without case", gb("[S]\r\nMyKey=1\r\n"), "s", "MYKEY", "1"},
    {"blanks around all", gb("  [ Name ]  \r\n   01  =   水秤   \r\n"), "Name", "01", "水秤"},
    {"quotes removed", gb("[S]\r\nk=\" a b \"\r\n"), "S", "k", " a b "},
    {"unmatched quote kept", gb("[S]\r\nk=\"abc'\r\n"), "S", "k", "\"abc'"},
    {"first key wins", gb("[S]\r\nk=1\r\nk=2\r\n"), "S", "k", "1"},
    {"key of another section", gb("[A]\r\nk=1\r\n[B]\r\nj=2\r\n"), "B", "k", "d"},
    {"section prefix is no match", kCName, "Nam", "01", "d"},
    {"empty value is a value", gb("[S]\r\nk=\r\n"), "S", "k", ""},
    {"comment is no key", gb("[S]\r\n;k=1\r\n"), "S", "k", "d"},
    {"Chinese value cut at 455", gb("[S]\r\nk=" + QString(456, QChar(0x9AA8))), "S", "k", QString(455, QChar(0x9AA8))},
    {"long default cut", kCName, "S", "k", QString(455, 'z'), {}, QString(500, 'z')},
    {"missing file", kNoFile, "S", "k", "d"},
    {"UTF-8 behind a BOM", kUtf8Ini, "lancommon", "COM003-1", "返回"},
    // "砂" is C9 B0, valid UTF-8 as well: without a mark it is GB18030 all the same.
    {"GB18030 valid as UTF-8", "[Name]\r\n01=\xC9\xB0\r\n", "Name", "01", "砂"},
    {"UTF-16 behind a BOM", u16("[Name]\r\n11=清水秤\r\n"), "name", "11", "清水秤"},
    {"a mark before text that is not UTF-8", "\xEF\xBB\xBF[Name]\r\n01=\xCA\xAF\r\n02=a\r\n", "Name", "02", "a"},
    {"10,000-character section name", kLongLines, QString(10000, 'N'), "01", QString(455, 'y')},
    {"key behind binary junk", rawBytes(fixture("BLZConfig_binary.dat")) + gb("\r\n[Name]\r\n01=石子"), "Name", "01",
     "石子"},
    {"line: port", kBlz, {}, "COMPort=", "3"},
    {"line: case matters", kBlz, {}, "comport=", ""},
    {"line: bare keyword takes the first", kBlz, {}, "BiaoZeroTime=", "first"},
    {"line: blanks trimmed", kBlz, {}, "UserNam:", "张三"},
    {"line: key must start the line", " COMPort=4\r\n", {}, "COMPort=", ""},
    {"line: missing file", kNoFile, {}, "COMPort=", ""},
    {"line: 10,000 characters", kLongLines, {}, "01=", QString(10000, QChar(0x9AA8))},
    // A write keeps the file's own bytes, in its own encoding.
    {"new file, GB18030", kNoFile, "骨料", "01", "骨料1", QByteArray::fromHex("5bb9c7c1cf5d0d0a30313db9c7c1cf310d0a")},
    {"replaced, no matter the case", kForeign, "NAME", "02", "c", QByteArray(kForeign).replace("02 = b ", "02=c")},
    {"new key after the section's last line", kForeign, "Name", "03", "c",
     QByteArray(kForeign).replace("02 = b \r\n", "02 = b \r\n03=c\r\n")},
    {"new section at the end", kForeign, "ZDTime", "01", "3", kForeign + "\r\n[ZDTime]\r\n01=3\r\n"},
    {"new key in last section without line end", "[S]\r\na=1", "S", "b", "2", "[S]\r\na=1\r\nb=2\r\n"},
    {"only the first of two sections", "[S]\r\nk=1\r\n[S]\r\nk=2\r\n", "S", "k", "9",
     "[S]\r\nk=9\r\n[S]\r\nk=2\r\n"},
    {"binary junk kept byte for byte", kJunk, "S", "k", "2", QByteArray(kJunk).replace("k=1", "k=2")},
    {"UTF-8 file stays UTF-8", kUtf8Ini, "LANCOMMON", "COM001-1", "确定", kUtf8Ini + "COM001-1=确定\r\n"},
    // The first naming: a file that holds only "砂" is valid UTF-8, and the next name is GB18030 all the same.
    {"written: GB18030 valid as UTF-8", gb("[Name]\r\n01=砂\r\n"), "Name", "02", "石", gb("[Name]\r\n01=砂\r\n02=石\r\n")},
    {"written: UTF-16", u16("[Name]\r\n01=砂"), "Name", "02", "石子", u16("[Name]\r\n01=砂\r\n02=石子\r\n")},
    {"written: UTF-16, new section", u16("[ZDTime]\r\n01=3\r\n"), "Name", "02", "石子",
     u16("[ZDTime]\r\n01=3\r\n\r\n[Name]\r\n02=石子\r\n")},
};
// A file (none: no file) appended to twice, or nothing appended: the lines 骨料1, "", 砂 written instead.
// CRLF after every line, in the encoding of the file's mark, else GB18030 even where the bytes are valid UTF-8.
const QByteArray kLines = QByteArray::fromHex("b9c7c1cf31" "0d0a" "0d0a" "c9b0" "0d0a");
const struct { const char* name; QByteArray before; const char* appended; QByteArray after; } kWritten[] = {
    {"new file", {}, nullptr, kLines},
    {"long file replaced", QByteArray(5000, 'z'), nullptr, kLines},
    {"GB18030 that is valid UTF-8", QByteArray::fromHex("c9b00d0acaaf"), nullptr, kLines},
    {"behind a UTF-8 mark", "\xEF\xBB\xBFx", nullptr,
     QByteArray::fromHex("efbbbf" "e9aaa8e6969931" "0d0a" "0d0a" "e7a082" "0d0a")},
    {"behind a UTF-16 mark", u16("x"), nullptr, u16(QString::fromUtf8("骨料1\r\n\r\n砂\r\n"))},
    {"append LF as CRLF", {}, "a\nb\n", "a\r\nb\r\na\r\nb\r\n"},
    {"append CRLF and lone CR", {}, "a\r\nb\r", "a\r\nb\ra\r\nb\r"},
    {"append to GB18030 valid as UTF-8", "\xCA\xAF\r\n", "砂\n", "\xCA\xAF\r\n\xC9\xB0\r\n\xC9\xB0\r\n"},
    {"append behind a UTF-8 mark", "\xEF\xBB\xBF", "砂\n", "\xEF\xBB\xBF\xE7\xA0\x82\r\n\xE7\xA0\x82\r\n"},
};

// Names of a plant whose GB18030 bytes are valid UTF-8 as well: 砂 石 水, 郑伟.
const struct { const char* name; QByteArray bytes; QStringList lines; } kRead[] = {
    {"CRLF, no last line end", "a\r\nb", {"a", "b"}},
    {"LF and lone CR", "a\nb\rc\r", {"a", "b", "c"}},
    {"empty lines kept", "a\r\n\r\n\nb", {"a", "", "", "b"}},
    {"GB18030", QByteArray::fromHex("b9c7c1cf310d0acbaec4e0"), {"骨料1", "水泥"}},
    {"UTF-8 behind a BOM", "\xEF\xBB\xBF" + QString::fromUtf8("骨料1\r\n水泥").toUtf8(), {"骨料1", "水泥"}},
    {"GB18030 that is valid UTF-8", QByteArray::fromHex("c9b0caafcbae0d0ad6a3ceb0"), {"砂石水", "郑伟"}},
    {"UTF-16 LE behind a BOM", QByteArray::fromHex("fffe" "a89a9965" "3100" "0d000a00" "346ce56c"), {"骨料1", "水泥"}},
    {"UTF-16 BE behind a BOM", QByteArray::fromHex("feff" "9aa86599" "0031" "000d000a" "6c346ce5"), {"骨料1", "水泥"}},
};

// A Windows path, its place in the application folder (null: not asked), and on the system drive.
const struct { const char *name, *path, *inApp, *systemDrive; } kWindowsPaths[] = {
    {"app path", "\\Data\\骨料.txt", "/Data/骨料.txt", "/drive_c/Data/骨料.txt"},
    {"no leading separator", "data\\CName.ini", "/data/CName.ini", "/drive_c/data/CName.ini"},
    {"lower-case drive", "c:\\Program Files\\MswSpool", nullptr, "/drive_c/Program Files/MswSpool"},
};
// DOS attributes before (null: the mount shows none), whether setting them works, and what is set (null: nothing).
const struct { const char *name, *before; bool setWorks; const char* written; } kShareAttributes[] = {
    {"folder", "10000000", true, "12000000"},
    {"other bits kept", "11200100", true, "13200100"},
    {"already hidden", "12000000", true, nullptr},
    {"no attributes on this mount", nullptr, true, nullptr},
    {"mount refuses", "10000000", false, "12000000"},
};
// Errors as form|routine|number, in order, and the routine of each record logged.
const struct { const char *name, *calls, *logged; } kRepeats[] = {
    {"same error twice", "Cansd|EnterChecked|13 Cansd|EnterChecked|13", "EnterChecked"},
    {"two numbers of a routine", "Cansd|EnterChecked|13 Cansd|EnterChecked|6", "EnterChecked EnterChecked"},
    {"two routines, one number", "Cansd|EnterChecked|13 Cansd|Form_Load|13", "EnterChecked Form_Load"},
    {"other form, same routine and number", "Cansd|ImgReturn_Click|5 CansdAG|ImgReturn_Click|5", "ImgReturn_Click"},
};

std::array<std::array<QString, 16>*, 7> biaoArrays()
{
    return {&BiaoZeroTime,      &BiaoZeroADValue,   &BiaoZeroWTValue,  &BiaoWeightTime,
            &BiaoWeightADValue, &BiaoWeightWTValue, &BiaoWeightFMValue};
}

template <class T, std::size_t N> QList<T> list(const std::array<T, N>& a) { return QList<T>(a.begin(), a.end()); }

const QStringList kDefaultScales = QStringList({"骨料1", "骨料2", "骨料3", "骨料4", "", "", "", "水秤", "水泥", "粉灰", "",
                                       "外加剂1", "外加剂2", "", "", ""});
const QList<short> kDefaultVibrators{0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0};

// A damaged or missing file, and what the console takes from it. blz empty: no file; cname: the fixture copied
// to Data/CName.ini (empty: none); biao: BiaoZeroTime of scale 0.
const struct { const char* name; QByteArray blz; const char* cname; int port; const char *help, *biao; } kDamaged[] = {
    {"empty help is 1", "COMPort=4\r\nIsShowCsHelp=\r\n", "", 4, "1", ""},
    {"port beyond 16 bits", "COMPort=70000\r\n", "", 2, "1", ""},
    {"binary BLZConfig.dat", rawBytes(fixture("BLZConfig_binary.dat")), "", 2, "1", ""},
    {"truncated BLZConfig.dat", rawBytes(fixture("BLZConfig_truncated.dat")), "", 5, "0", "值0"},
    {"CName.ini of long lines", {}, "CName_longlines.ini", 2, "1", "stale"},
    {"binary CName.ini", {}, "BLZConfig_binary.dat", 2, "1", "stale"},
};

// The names file, empty: none.
const QString kNames = QString::fromUtf8("[Name]\r\n01=石子\r\n08=水泥A\r\n");
const struct { const char* name; QByteArray cname; bool unreadable; } kNamesFiles[] = {
    {"GB18030", TextFile::encode(kNames), false},
    {"missing", {}, false},
    {"unreadable", TextFile::encode(kNames), true},
};
}  // namespace

class AppFilesTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        app.renew();
        QDir().mkpath(app("Data"));
        ResetErrorLogMemory();
        SetDefaultNames();
        CNameMissing = false;
        for (auto* a : biaoArrays()) a->fill(QStringLiteral("stale"));
    }
    void cleanup() { AppPaths::setDosAttributes({}); }

    void written_data() { TableRows(kWritten); }
    void written()
    {
        const auto& c = TableRow(kWritten);
        if (!c.before.isNull()) QVERIFY(putBytes(app("a.txt"), c.before));
        if (!c.appended)
            QVERIFY(TextFile::writeLines(app("a.txt"), {QString::fromUtf8("骨料1"), QString(), QString::fromUtf8("砂")}));
        for (int i = 0; i < 2 && c.appended; ++i)
            QVERIFY(TextFile::append(app("a.txt"), QString::fromUtf8(c.appended)));
        QCOMPARE(rawBytes(app("a.txt")), c.after);
    }

    void readLines_data() { TableRows(kRead); }
    void readLines()
    {
        QVERIFY(putBytes(app("r.txt"), TableRow(kRead).bytes));
        QStringList got{"stale"};
        QVERIFY(TextFile::readLines(app("r.txt"), &got));
        QCOMPARE(got, TableRow(kRead).lines);
    }

    // Whatever the umask, the next operator of the group can write what the console made, and what it
    // replaced: files 0664, folders 2775.
    void madeGroupWritable()
    {
        FilesAsUser operatorsUmask(::geteuid(), ::getegid());
        const struct { const char* made; std::function<void(const QString&)> make; unsigned mode; } rows[] = {
            {"f/lines.txt", [](const QString& p) { TextFile::writeLines(p, {"x"}); }, 0664},
            {"f/old.txt", [](const QString& p) { putBytes(p, "0644"); TextFile::writeLines(p, {"x"}); }, 0664},
            {"f/log.txt", [](const QString& p) { TextFile::append(p, "x\n"); }, 0664},
            {"f/p.ini", [](const QString& p) { WriteProfileValue("S", "k", "v", p); }, 0664},
            {"a/b/c", [](const QString& p) { SharedFiles::makeFolder(p); }, 02775},
            {"a/b", [](const QString&) {}, 02775},
            {"a/b/.hidden", [](const QString& p) { AppPaths::setHidden(p.chopped(7) + "c"); }, 0664},
        };
        QVERIFY(QDir().mkpath(app("f")));
        for (const auto& r : rows) {
            r.make(app(r.made));
            struct stat st {};
            const unsigned mode = ::stat(QFile::encodeName(app(r.made)).constData(), &st) == 0 ? st.st_mode & 07777 : 0;
            QVERIFY2(mode == r.mode, qPrintable(QStringLiteral("%1: %2").arg(QLatin1String(r.made)).arg(mode, 0, 8)));
        }
    }

    // A folder the operator may not write to: a file he may write is rewritten in place, by the profile
    // writer too; one he may not, or a new one, is refused and nothing is lost.
    void readOnlyFolderWritableFile_data()
    {
        QTest::addColumn<bool>("filesWritable");
        QTest::newRow("files writable") << true;
        QTest::newRow("files read-only") << false;
    }
    void readOnlyFolderWritableFile()
    {
        QFETCH(bool, filesWritable);
        const QByteArray blz("COMPort=3\r\n"), cname("[Name]\r\n01=a\r\n");
        QVERIFY(putBytes(app("ro/BLZConfig.dat"), blz));
        QVERIFY(putBytes(app("ro/CName.ini"), cname));
        makeReadOnly(app());
        for (const char* f : {"ro/BLZConfig.dat", "ro/CName.ini"})
            if (filesWritable)
                QFile::setPermissions(app(f), QFile::permissions(app(f)) | QFileDevice::WriteOther);
        {
            UnprivilegedFiles asOperator;
            QCOMPARE(TextFile::writeLines(app("ro/BLZConfig.dat"), {"COMPort=4"}), filesWritable);
            QVERIFY(WriteProfileValue("Name", "01", QString::fromUtf8("石子"), app("ro/CName.ini")));  // told True
            QVERIFY(filesWritable || !TextFile::append(app("ro/BLZConfig.dat"), "x\n"));
            QVERIFY(!TextFile::writeLines(app("ro/new.dat"), {"x"}));
        }
        makeWritable(app());
        QCOMPARE(rawBytes(app("ro/BLZConfig.dat")), filesWritable ? QByteArray("COMPort=4\r\n") : blz);
        QCOMPARE(rawBytes(app("ro/CName.ini")), filesWritable ? QByteArray("[Name]\r\n01=\xCA\xAF\xD7\xD3\r\n")
                                                             : cname);
        QCOMPARE(QDir(app("ro")).entryList(QDir::Files | QDir::Hidden), (QStringList{"BLZConfig.dat", "CName.ini"}));
    }

    void profile_data() { TableRows(kProfile); }
    void profile()
    {
        const Case& c = TableRow(kProfile);
        const QString file = app("p.ini");
        if (c.bytes != kNoFile) QVERIFY(putBytes(file, c.bytes));
        if (!c.after.isNull()) {
            QVERIFY(WriteProfileValue(c.section, c.key, c.value, file));
            QCOMPARE(rawBytes(file), c.after);
        }
        QCOMPARE(c.section.isNull() ? ReadKeyLine(file, c.key) : ReadProfileValue(c.section, c.key, c.deflt, file),
                 c.value);
    }

    void windowsPaths_data() { TableRows(kWindowsPaths); }
    void windowsPaths()
    {
        const auto& r = TableRow(kWindowsPaths);
        if (r.inApp) QCOMPARE(AppPaths::inApp(r.path), app() + r.inApp);
        QCOMPARE(AppPaths::systemDrive(r.path), app() + r.systemDrive);
        QCOMPARE(AppPaths::partnerShare("STATION2", r.path), app() + "/stations/STATION2" + r.systemDrive);
    }

    void hidden()
    {
        const QString err = AppPaths::inApp("ProgramErr");
        const QString spool = AppPaths::systemDrive("C:\\Program Files\\MswSpool");
        QVERIFY(QDir().mkpath(err) && QDir().mkpath(spool));
        AppPaths::setHidden(err);
        AppPaths::setHidden(err + "/");
        // A list that lost its last line end.
        QVERIFY(putBytes(app() + "/.hidden", rawBytes(app() + "/.hidden") + "last"));
        AppPaths::setHidden(app() + "/Data");
        AppPaths::setHidden(spool);
        QVERIFY(AppPaths::isHidden(err) && AppPaths::isHidden(spool) && AppPaths::isHidden(app() + "/.dotfile"));
        QVERIFY(!AppPaths::isHidden(app() + "/Program"));
        QCOMPARE(rawBytes(app() + "/.hidden"), QByteArray("ProgramErr\nlast\nData\n"));
        QCOMPARE(rawBytes(app() + "/drive_c/Program Files/.hidden"), QByteArray("MswSpool\n"));
    }

    // On a Windows share the folder takes the hidden bit among its DOS attributes (low byte first), the others
    // kept. A mount without them, or one that refuses, leaves ".hidden" alone to tell it; nothing is logged.
    void hiddenOnAWindowsShare_data() { TableRows(kShareAttributes); }
    void hiddenOnAWindowsShare()
    {
        const auto& r = TableRow(kShareAttributes);
        const QString spool = AppPaths::partnerShare("192.168.10.2", "C:\\Program Files\\CNameSpool");
        QVERIFY(QDir().mkpath(spool));
        QByteArray set;
        AppPaths::setDosAttributes({[&](const QString& p, QByteArray* v) {
                                        *v = r.before ? QByteArray::fromHex(r.before) : QByteArray();
                                        return p == spool && r.before;
                                    },
                                    [&](const QString& p, const QByteArray& v) {
                                        set = p == spool ? v : "elsewhere";
                                        return r.setWorks;
                                    }});
        AppPaths::setHidden(spool + "/");
        QCOMPARE(set, r.written ? QByteArray::fromHex(r.written) : QByteArray());
        QVERIFY(AppPaths::isHidden(spool));
        QVERIFY(!QFileInfo::exists(app() + "/ProgramErr"));
    }

    void comPortDevice()
    {
        QCOMPARE(AppPaths::comPortDevice(1), QStringLiteral("/dev/ttyS0"));  // no mapping file
        QVERIFY(putBytes(app() + "/Data/ComPorts.ini",
                         "[ComPorts]\r\nCom2 = /dev/ttyUSB0 \r\ncom3=/dev/ttyACM1\r\nCom4=\r\n"));
        QCOMPARE(AppPaths::comPortDevice(2), QStringLiteral("/dev/ttyUSB0"));
        QCOMPARE(AppPaths::comPortDevice(4), QStringLiteral("/dev/ttyS3"));  // empty mapping
    }

    void recordFormatAndFileName()
    {
        const QByteArray old = "ErrTime\xa3\xba" "2026-03-01   08:00:00\r\nold\r\n";
        QVERIFY(putBytes(ErrorLogPath(QDate::currentDate()), old));
        LogProgramError("Cansd", "ImgBdOk_Click", "13", QString::fromUtf8("类型不匹配"));
        const QByteArray bytes = rawBytes(ErrorLogPath(QDate::currentDate()));
        QVERIFY(bytes.startsWith(old));
        const QStringList lines = TextFile::decode(bytes.mid(old.size())).split("\r\n");
        // The date and time as the calibration records write them, three blanks between: "2026/3/5   9:03:22".
        QVERIFY2(QRegularExpression(QString::fromUtf8("^ErrTime：\\d{4}/[1-9]\\d?/[1-9]\\d?   [1-2]?\\d:\\d\\d:\\d\\d$"))
                     .match(lines[0]).hasMatch(), qPrintable(lines[0]));
        QCOMPARE(lines.mid(1), (QStringList{QString::fromUtf8("ErrNumber:13----类型不匹配"), "ErrForm:Cansd",
                                            "ErrSub:ImgBdOk_Click", QString(52, '#'), ""}));
        // The month has no leading zero.
        QCOMPARE(ErrorLogPath(QDate(2026, 3, 5)), app("ProgramErr/20263ErrLog.txt"));
    }

    void oncePerRoutineAndNumber_data() { TableRows(kRepeats); }
    void oncePerRoutineAndNumber()
    {
        QFETCH(int, row);
        // A new run logs them again.
        for (int run = 0; run < 2; ++run, ResetErrorLogMemory())
            for (const QString& call : QString(kRepeats[row].calls).split(' ')) {
                const QStringList f = call.split('|');
                LogProgramError(f[0], f[1], f[2], "description");
            }
        QStringList subs;
        for (const QString& line : ErrorLogText().split("\r\n"))
            if (line.startsWith("ErrSub:")) subs << line.mid(7);
        QCOMPARE(subs.join(' '), kRepeats[row].logged + QStringLiteral(" ") + kRepeats[row].logged);
    }

    void cNameIniAndVibrators()
    {
        LoadCNameIni();
        QVERIFY(CNameMissing);

        QVERIFY(QFile::copy(fixture("CName.ini"), app("Data/CName.ini")));
        SetDefaultNames();
        LoadCNameIni();
        LoadZDTimeIni();
        QCOMPARE(list(ScaleVibrator), (QList<short>{3, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 7}));
        QCOMPARE(list(ScaleName), QStringList({"石子", "砂", "", "骨料4", "", "", "外加粉", "清水秤", "水泥A", "粉灰B", "矿粉",
                                      "减水剂", "早强剂", "防冻剂", "", ""}));
        // Sections "11" and "08" name bins beside the defaults; a key present and empty replaces its default.
        QCOMPARE(list(BinName), QStringList({"骨料1", "骨料2", "骨料3", "骨料4", "", "", "", "", "水1", "水泥M1", "水泥M2",
                                    "水泥M3", "水泥M4", "粉灰M1", "粉灰M2", "", "", "", "", "外加剂20", "", "水2"}));

        // A value beyond 16 bits ends the routine with a line in the error log; values read so far stay.
        QVERIFY(putBytes(app("Data/CName.ini"), "[ZDTime]\r\n01=2\r\n02=99999\r\n03=5\r\n"));
        LoadZDTimeIni();
        QCOMPARE(list(ScaleVibrator).mid(0, 3), (QList<short>{2, 0, 1}));
        QVERIFY(TextFile::exists(ErrorLogPath(QDate::currentDate())));
    }

    void blzSaveAndLoad()
    {
        // Scales without a name share their keys, and on reading each takes the first such line.
        const auto value = [](int k, int i) {
            return QStringLiteral("v%1 值").arg(k * 14 + (QList<int>{4, 5, 6, 10, 13}.contains(i) ? 4 : i));
        };
        for (int k = 0; k < 7; ++k)
            for (int i = 0; i < 14; ++i) (*biaoArrays()[k])[i] = value(k, i);
        PortNo = 5;
        ShowCsHelp = "0";
        Agg1RecordMode = "1";
        SaveBLZConfig();

        const QByteArray bytes = rawBytes(app("Data/BLZConfig.dat"));
        QVERIFY(bytes.startsWith("COMPort=5\r\nIsShowCsHelp=0\r\n" + QByteArray::fromHex("b9c7c1cf31") +
                                 "BiaoZeroTime=v0 " + QByteArray::fromHex("d6b5") + "\r\n"));
        QVERIFY(bytes.endsWith("\r\nAgg1RecordMode=1\r\n"));
        QCOMPARE(bytes.count("\r\n"), 2 + 14 * 7 + 1);

        for (auto* a : biaoArrays()) a->fill(QStringLiteral("stale"));
        LoadBLZConfig();
        for (int k = 0; k < 7; ++k)
            for (int i = 0; i < 14; ++i) QCOMPARE((*biaoArrays()[k])[i], value(k, i));
        QCOMPARE((QStringList{QString::number(PortNo), ShowCsHelp, Agg1RecordMode}), (QStringList{"5", "0", "1"}));
    }

    // Damaged or missing files leave the default names; a save after that writes a whole, readable file.
    void blzLoad_data() { TableRows(kDamaged); }
    void blzLoad()
    {
        const auto& c = TableRow(kDamaged);
        if (!c.blz.isEmpty()) QVERIFY(putBytes(app("Data/BLZConfig.dat"), c.blz));
        if (*c.cname) QVERIFY(QFile::copy(fixture(c.cname), app("Data/CName.ini")));
        PortNo = 9;
        ShowCsHelp = "x";
        LoadBLZConfig();
        LoadZDTimeIni();
        QCOMPARE(list(ScaleName), kDefaultScales);
        QCOMPARE(list(ScaleVibrator), kDefaultVibrators);
        QCOMPARE((QStringList{QString::number(PortNo), ShowCsHelp, BiaoZeroTime[0]}),
                 (QStringList{QString::number(c.port), c.help, c.biao}));
        SaveBLZConfig();
        LoadBLZConfig();
        QCOMPARE((QStringList{QString::number(ComPortSetting), ShowCsHelp}),
                 (QStringList{QString::number(c.port), c.help}));
    }

    // The values of a scale are stored under its name: a names file that cannot be read this run must not
    // cost them at the save on exit.
    void valuesSurviveTheNamesFile_data() { TableRows(kNamesFiles); }
    void valuesSurviveTheNamesFile()
    {
        const auto& [name, cname, unreadable] = TableRow(kNamesFiles);
        const QString at = QStringLiteral("2026/3/5 14:03:22");
        QVERIFY(putBytes(app("Data/BLZConfig.dat"),
                         GbLines({"COMPort=3", "IsShowCsHelp=1", "石子BiaoZeroTime=" + at, "石子BiaoZeroADValue=3000",
                                  "水泥ABiaoWeightFMValue=1500.5", "Agg1RecordMode=1"})));
        if (!cname.isEmpty()) QVERIFY(putBytes(app("Data/CName.ini"), cname));
        makeReadOnly(app());
        if (unreadable) QFile::setPermissions(app("Data/CName.ini"), {});
        {
            UnprivilegedFiles asOperator;
            LoadBLZConfig();
        }
        makeWritable(app());
        QCOMPARE((QStringList{ScaleName[0], BiaoZeroADValue[0], BiaoWeightFMValue[8], QString::number(PortNo)}),
                 !cname.isEmpty() && !unreadable ? (QStringList{"石子", "3000", "1500.5", "3"})
                                                 : (QStringList{"骨料1", "", "", "3"}));
        SaveBLZConfig();

        // With the names readable again, every value is there.
        QFile::setPermissions(app("Data/CName.ini"), QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        QVERIFY(putBytes(app("Data/CName.ini"), GbLines({"[Name]", "01=石子", "08=水泥A"})));
        for (auto* a : biaoArrays()) a->fill(QStringLiteral("stale"));
        LoadBLZConfig();
        QCOMPARE((QStringList{BiaoZeroTime[0], BiaoZeroADValue[0], BiaoWeightFMValue[8], BiaoZeroADValue[1]}),
                 (QStringList{at, "3000", "1500.5", ""}));
        // Saving twice adds nothing: the kept lines are not kept twice.
        SaveBLZConfig();
        const QByteArray once = rawBytes(BLZConfigPath());
        LoadBLZConfig();
        SaveBLZConfig();
        QCOMPARE(rawBytes(BLZConfigPath()), once);
    }

    void sysDataNetPathAndBlzPath()
    {
        OperatorName = "old";
        LoadSysData();
        QCOMPARE(OperatorName, QString("old"));  // no file keeps the name
        QVERIFY(putBytes(app("Data/SysData.dat"), "x=1\r\n"));
        LoadSysData();
        QCOMPARE(OperatorName, QString());
        QVERIFY(putBytes(app("data/NetPath.ini"), "NetworkPath=/mnt/q\r\n"));
        QCOMPARE(ReadNetPath(), QString("/mnt/q"));
        QVERIFY(putBytes(app("Data/NetPath.ini"), "NetworkPath=/mnt/p\r\n"));
        QCOMPARE(ReadNetPath(), QString("/mnt/p"));
        QCOMPARE(BLZConfigPath(), app("Data/BLZConfig.dat"));
        QVERIFY(QDir(app("Data")).removeRecursively());
        QCOMPARE(BLZConfigPath(), app("BLZConfig.dat"));
    }

private:
    AppFolder app;
};

QTEST_GUILESS_MAIN(AppFilesTest)
#include "tst_app_files.moc"
