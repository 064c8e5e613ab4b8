#include "common/error_log.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "common/text_file.h"
#include "common_test_util.h"

namespace {
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
    {"UTF-8 with a BOM", "\xEF\xBB\xBF" + kNames.toUtf8(), false},
    {"UTF-16 with a BOM", u16(kNames), false},
    {"missing", {}, false},
    {"unreadable", TextFile::encode(kNames), true},
};
}  // namespace

class ScaleTableTest : public QObject {
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

QTEST_GUILESS_MAIN(ScaleTableTest)
#include "tst_scale_table.moc"
