#include "common/app_paths.h"
#include "common/error_log.h"
#include "common/module1.h"
#include "common/scale_table.h"
#include "common/text_file.h"
#include "common_test_util.h"

#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {
std::array<std::array<QString, 16>*, 7> biaoArrays()
{
    return {&BiaoZeroTime,      &BiaoZeroADValue,   &BiaoZeroWTValue,  &BiaoWeightTime,
            &BiaoWeightADValue, &BiaoWeightWTValue, &BiaoWeightFMValue};
}

void clearBiao()
{
    for (auto* a : biaoArrays()) a->fill(QStringLiteral("stale"));
}
}  // namespace

class ScaleTableTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void defaultScales_data();
    void defaultScales();
    void defaultBins_data();
    void defaultBins();
    void cNameIni();
    void cNameIniMissing();
    void zdTimeIni();
    void paths_data();
    void paths();
    void blzRoundTrip_data();
    void blzRoundTrip();
    void blzFileBytes();
    void blzKeyLines_data();
    void blzKeyLines();
    void damagedFilesGiveDefaults_data();
    void damagedFilesGiveDefaults();
    void readOnlyAppFolder();
    void sysData_data();
    void sysData();
    void netPath_data();
    void netPath();

private:
    std::unique_ptr<QTemporaryDir> dir_;
    QString app(const QString& relative = QString()) const
    {
        return relative.isEmpty() ? dir_->path() : dir_->filePath(relative);
    }
    void checkDefaults();
};

void ScaleTableTest::init()
{
    dir_ = std::make_unique<QTemporaryDir>();
    AppPaths::setAppFolder(dir_->path());
    QDir().mkpath(app("Data"));
    ResetErrorLogMemory();
    SetDefaultNames();
    CNameMissing = false;
    PortNo = 2;
    ComPortSetting = 2;
    ShowCsHelp = "1";
    Agg1RecordMode.clear();
    OperatorName.clear();
    clearBiao();
}

void ScaleTableTest::cleanup() { AppPaths::setAppFolder(QString()); }

void ScaleTableTest::defaultScales_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<int>("vibrator");
    const char* names[16] = {"骨料1", "骨料2", "骨料3", "骨料4", "", "", "", "水秤",
                             "水泥", "粉灰", "", "外加剂1", "外加剂2", "", "", ""};
    const int decimals[16] = {0, 0, 0, 0, 0, 0, 1, 1, 0, 1, 1, 2, 2, 2, 0, 0};
    for (int i = 0; i < 16; ++i)
        QTest::addRow("scale %d", i) << i << QString::fromUtf8(names[i]) << decimals[i] << (i >= 2 && i <= 10 ? 1 : 0);
}

void ScaleTableTest::defaultScales()
{
    QFETCH(int, index);
    QFETCH(QString, name);
    QFETCH(int, decimals);
    QFETCH(int, vibrator);
    ScaleName.fill("x");
    ScaleDecimals.fill(9);
    ScaleVibrator.fill(9);
    SetDefaultNames();
    QCOMPARE(ScaleName[index], name);
    QCOMPARE(int(ScaleDecimals[index]), decimals);
    QCOMPARE(int(ScaleVibrator[index]), vibrator);
}

void ScaleTableTest::defaultBins_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("name");
    const char* names[22] = {"骨料1",  "骨料2",  "骨料3", "骨料4", "",         "",         "", "",
                             "水秤",   "水泥M1", "水泥M2", "水泥M3", "",        "粉灰M1",   "粉灰M2",
                             "",       "",       "",       "外加剂19", "外加剂20", "",       ""};
    for (int i = 0; i < 22; ++i) QTest::addRow("bin %d", i) << i << QString::fromUtf8(names[i]);
}

void ScaleTableTest::defaultBins()
{
    QFETCH(int, index);
    QFETCH(QString, name);
    BinName.fill("x");
    SetDefaultNames();
    QCOMPARE(BinName[index], name);
}

void ScaleTableTest::checkDefaults()
{
    std::array<QString, 16> names = ScaleName;
    std::array<QString, 22> bins = BinName;
    SetDefaultNames();
    QCOMPARE(names, ScaleName);
    QCOMPARE(bins, BinName);
}

void ScaleTableTest::cNameIni()
{
    QVERIFY(QFile::copy(fixture("CName.ini"), app("Data/CName.ini")));
    LoadCNameIni();
    QVERIFY(!CNameMissing);
    const QStringList scales{"石子", "砂",   "",       "骨料4",  "",       "",       "外加粉", "清水秤",
                             "水泥A", "粉灰B", "矿粉", "减水剂", "早强剂", "防冻剂", "",       ""};
    for (int i = 0; i < 16; ++i) QCOMPARE(ScaleName[i], scales[i]);
    QCOMPARE(BinName[8], QString::fromUtf8("水1"));    // section "11", key "01"
    QCOMPARE(BinName[21], QString::fromUtf8("水2"));   // section "11", key "02"
    QCOMPARE(BinName[12], QString::fromUtf8("水泥M4"));  // section "08", key "04"
    QCOMPARE(BinName[18], QString());                   // present and empty replaces "外加剂19"
    QCOMPARE(BinName[19], QString::fromUtf8("外加剂20"));  // absent keeps the default
    QCOMPARE(BinName[0], QString::fromUtf8("骨料1"));
    QCOMPARE(int(ScaleDecimals[8]), 0);  // decimals are constants, not in the file
}

void ScaleTableTest::cNameIniMissing()
{
    ScaleName[0] = "before";
    LoadCNameIni();
    QVERIFY(CNameMissing);
    QCOMPARE(ScaleName[0], QString("before"));
}

void ScaleTableTest::zdTimeIni()
{
    LoadZDTimeIni();  // no file: the defaults stand
    QCOMPARE(int(ScaleVibrator[2]), 1);
    QVERIFY(QFile::copy(fixture("CName.ini"), app("Data/CName.ini")));
    LoadZDTimeIni();
    const int expected[16] = {3, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 7};
    for (int i = 0; i < 16; ++i) QCOMPARE(int(ScaleVibrator[i]), expected[i]);

    // A value beyond 16 bits ends the routine with one line in the error log, values read so far kept.
    QVERIFY(putBytes(app("Data/CName.ini"), "[ZDTime]\r\n01=2\r\n02=99999\r\n03=5\r\n"));
    LoadZDTimeIni();
    QCOMPARE(int(ScaleVibrator[0]), 2);
    QCOMPARE(int(ScaleVibrator[1]), 0);
    QCOMPARE(int(ScaleVibrator[2]), 1);
    QVERIFY(TextFile::exists(ErrorLogPath(QDate::currentDate())));
}

void ScaleTableTest::paths_data()
{
    QTest::addColumn<bool>("dataFolder");
    QTest::addColumn<QString>("blz");
    QTest::addColumn<QString>("sys");
    QTest::newRow("with Data") << true << "Data/BLZConfig.dat" << "Data/SysData.dat";
    QTest::newRow("without Data") << false << "BLZConfig.dat" << "SysData.dat";
}

void ScaleTableTest::paths()
{
    QFETCH(bool, dataFolder);
    QFETCH(QString, blz);
    QFETCH(QString, sys);
    if (!dataFolder) QVERIFY(QDir(app("Data")).removeRecursively());
    QCOMPARE(BLZConfigPath(), app(blz));
    QCOMPARE(SysDataPath(), app(sys));
    QCOMPARE(CNameIniPath(), app("Data/CName.ini"));
}

void ScaleTableTest::blzRoundTrip_data()
{
    QTest::addColumn<bool>("dataFolder");
    QTest::newRow("in Data") << true;
    QTest::newRow("in the application folder") << false;
}

void ScaleTableTest::blzRoundTrip()
{
    QFETCH(bool, dataFolder);
    if (!dataFolder) QVERIFY(QDir(app("Data")).removeRecursively());
    SetDefaultNames();
    int n = 0;
    for (auto* a : biaoArrays())
        for (int i = 0; i < 14; ++i) (*a)[i] = QStringLiteral("v%1 %2").arg(n++).arg(QString::fromUtf8("值"));
    // Scales without a name share their keys, and on reading each takes the first such line.
    for (auto* a : biaoArrays())
        for (int i : {4, 5, 6, 10, 13}) (*a)[i] = (*a)[4];
    const auto saved = biaoArrays();
    std::array<std::array<QString, 16>, 7> expected;
    for (int k = 0; k < 7; ++k) expected[k] = *saved[k];
    PortNo = 5;
    ShowCsHelp = "0";
    Agg1RecordMode = "1";
    SaveBLZConfig();
    QVERIFY(TextFile::exists(BLZConfigPath()));

    clearBiao();
    PortNo = 2;
    ShowCsHelp = "x";
    Agg1RecordMode = "x";
    LoadBLZConfig();
    for (int k = 0; k < 7; ++k)
        for (int i = 0; i < 14; ++i) QCOMPARE((*saved[k])[i], expected[k][i]);
    QCOMPARE(int(ComPortSetting), 5);
    QCOMPARE(int(PortNo), 5);
    QCOMPARE(ShowCsHelp, QString("0"));
    QCOMPARE(Agg1RecordMode, QString("1"));
    QVERIFY(CNameMissing);  // there is no CName.ini here
}

void ScaleTableTest::blzFileBytes()
{
    for (auto* a : biaoArrays()) a->fill(QString());
    BiaoZeroTime[0] = "2026-03-05 10:11:12";
    PortNo = 3;
    ShowCsHelp = "1";
    Agg1RecordMode = "0";
    SaveBLZConfig();
    const QByteArray bytes = rawBytes(app("Data/BLZConfig.dat"));
    QVERIFY(bytes.startsWith("COMPort=3\r\nIsShowCsHelp=1\r\n" + TextFile::encode(QString::fromUtf8("骨料1")) +
                             "BiaoZeroTime=2026-03-05 10:11:12\r\n"));
    QVERIFY(bytes.startsWith(QByteArray::fromHex("434f4d506f72743d330d0a")));
    QVERIFY(bytes.contains(QByteArray::fromHex("b9c7c1cf31") + "BiaoZeroADValue=\r\n"));
    QVERIFY(bytes.endsWith("\r\nAgg1RecordMode=0\r\n"));
    QCOMPARE(bytes.count("\r\n"), 2 + 14 * 7 + 1);
    QCOMPARE(bytes.count('\n'), 2 + 14 * 7 + 1);
    QStringList lines;
    QVERIFY(TextFile::readLines(app("Data/BLZConfig.dat"), &lines));
    QCOMPARE(lines[2 + 7 * 7], QString::fromUtf8("水秤BiaoZeroTime="));
    QCOMPARE(lines[2 + 7 * 4], QString::fromUtf8("BiaoZeroTime="));
}

void ScaleTableTest::blzKeyLines_data()
{
    QTest::addColumn<QString>("content");
    QTest::addColumn<int>("port");
    QTest::addColumn<QString>("help");
    QTest::addColumn<QString>("recordMode");
    QTest::newRow("port 0 starts on 2") << "COMPort=0\r\nIsShowCsHelp=0\r\n" << 2 << "0" << "0";
    QTest::newRow("empty help is 1") << "COMPort=4\r\nIsShowCsHelp=\r\n" << 4 << "1" << "0";
    QTest::newRow("help as text") << "COMPort=4\r\nIsShowCsHelp=True\r\n" << 4 << "True" << "0";
    QTest::newRow("no lines") << "" << 2 << "1" << "0";
    QTest::newRow("port with blanks and junk") << "COMPort=  3x\r\n" << 3 << "1" << "0";
    QTest::newRow("port rounded to even") << "COMPort=2.5\r\n" << 2 << "1" << "0";
    QTest::newRow("port beyond 16 bits") << "COMPort=70000\r\n" << 2 << "1" << "0";
    QTest::newRow("record mode through Val") << "Agg1RecordMode=1.50abc\r\n" << 2 << "1" << "1.5";
    QTest::newRow("record mode hex") << "Agg1RecordMode=&H10\r\n" << 2 << "1" << "16";
    QTest::newRow("lower-case key is no key") << "comport=5\r\n" << 2 << "1" << "0";
}

void ScaleTableTest::blzKeyLines()
{
    QFETCH(QString, content);
    QFETCH(int, port);
    QFETCH(QString, help);
    QFETCH(QString, recordMode);
    QVERIFY(putBytes(app("Data/BLZConfig.dat"), TextFile::encode(content)));
    PortNo = 9;
    LoadBLZConfig();
    QCOMPARE(int(ComPortSetting), port);
    QCOMPARE(int(PortNo), port);
    QCOMPARE(ShowCsHelp, help);
    QCOMPARE(Agg1RecordMode, recordMode);
    for (auto* a : biaoArrays()) QCOMPARE((*a)[0], QString());
}

void ScaleTableTest::damagedFilesGiveDefaults_data()
{
    QTest::addColumn<QString>("blzFixture");    // copied to Data/BLZConfig.dat; empty: none
    QTest::addColumn<QString>("cnameFixture");  // copied to Data/CName.ini; empty: none
    QTest::addColumn<bool>("dataFolder");
    QTest::addColumn<int>("port");
    QTest::addColumn<QString>("help");
    QTest::addColumn<QString>("recordMode");
    QTest::newRow("binary BLZConfig.dat") << "BLZConfig_binary.dat" << "" << true << 2 << "1" << "0";
    QTest::newRow("truncated BLZConfig.dat") << "BLZConfig_truncated.dat" << "" << true << 5 << "0" << "0";
    QTest::newRow("CName.ini of 10,000-character lines") << "" << "CName_longlines.ini" << true << 2 << "1" << "";
    QTest::newRow("binary CName.ini") << "" << "BLZConfig_binary.dat" << true << 2 << "1" << "";
    QTest::newRow("no Data folder") << "" << "" << false << 2 << "1" << "";
}

void ScaleTableTest::damagedFilesGiveDefaults()
{
    QFETCH(QString, blzFixture);
    QFETCH(QString, cnameFixture);
    QFETCH(bool, dataFolder);
    QFETCH(int, port);
    QFETCH(QString, help);
    QFETCH(QString, recordMode);
    if (!dataFolder) QVERIFY(QDir(app("Data")).removeRecursively());
    if (!blzFixture.isEmpty()) QVERIFY(QFile::copy(fixture(blzFixture), app("Data/BLZConfig.dat")));
    if (!cnameFixture.isEmpty()) QVERIFY(QFile::copy(fixture(cnameFixture), app("Data/CName.ini")));
    ScaleName.fill("x");
    BinName.fill("x");
    ShowCsHelp = "x";

    LoadBLZConfig();
    LoadZDTimeIni();
    LoadSysData();
    checkDefaults();
    for (int i = 0; i < 16; ++i) QCOMPARE(int(ScaleVibrator[i]), (i >= 2 && i <= 10 ? 1 : 0));
    QCOMPARE(int(ComPortSetting), port);
    QCOMPARE(ShowCsHelp, help);
    QCOMPARE(Agg1RecordMode, recordMode);  // an absent file leaves it as it was
    QCOMPARE(OperatorName, QString());
    QCOMPARE(ReadNetPath(), QString());
    if (blzFixture == "BLZConfig_truncated.dat") {
        QCOMPARE(BiaoWeightFMValue[0], QString::fromUtf8("值0"));  // the last whole line
        QCOMPARE(BiaoZeroTime[1], QString());
    } else {
        for (auto* a : biaoArrays())
            for (int i = 0; i < 14; ++i) QCOMPARE((*a)[i], blzFixture.isEmpty() ? QString("stale") : QString());
    }

    // Saving after a damaged load writes a whole, readable file.
    PortNo = ComPortSetting;
    SaveBLZConfig();
    clearBiao();
    LoadBLZConfig();
    QCOMPARE(int(ComPortSetting), port);
    QCOMPARE(ShowCsHelp, help);
}

void ScaleTableTest::readOnlyAppFolder()
{
    QVERIFY(QFile::copy(fixture("CName.ini"), app("Data/CName.ini")));
    LoadBLZConfig();  // the names of CName.ini are the keys
    BiaoZeroTime[0] = "kept";
    PortNo = 4;
    SaveBLZConfig();
    const QByteArray before = rawBytes(app("Data/BLZConfig.dat"));
    makeReadOnly(app());
    {
        UnprivilegedFiles asOperator;
        LoadBLZConfig();
        QCOMPARE(ScaleName[0], QString::fromUtf8("石子"));
        QCOMPARE(BiaoZeroTime[0], QString("kept"));
        QCOMPARE(int(ComPortSetting), 4);
        BiaoZeroTime[0] = "changed";
        PortNo = 6;
        SaveBLZConfig();  // lost silently
        LogProgramError("PLC", "ExitSystem", "75", "Path/File access error");
        LoadZDTimeIni();
        LoadSysData();
    }
    makeWritable(app());
    QCOMPARE(rawBytes(app("Data/BLZConfig.dat")), before);
    QCOMPARE(QDir(app()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden), QStringList{"Data"});
    QCOMPARE(QDir(app("Data")).entryList(QDir::Files | QDir::Hidden), (QStringList{"BLZConfig.dat", "CName.ini"}));

    // An application folder that is a file, not a folder: nothing can be read or written there.
    QVERIFY(putBytes(app("notafolder"), "x"));
    AppPaths::setAppFolder(app("notafolder"));
    LoadBLZConfig();
    SaveBLZConfig();
    LogProgramError("PLC", "ExitSystem", "76", "Path not found");
    QCOMPARE(int(ComPortSetting), 2);
    QCOMPARE(rawBytes(app("notafolder")), QByteArray("x"));
}

void ScaleTableTest::sysData_data()
{
    QTest::addColumn<QByteArray>("bytes");  // "<none>": no file
    QTest::addColumn<bool>("dataFolder");
    QTest::addColumn<QString>("name");
    QTest::newRow("name trimmed") << TextFile::encode(QString::fromUtf8("UserPwd:1\r\nUserNam:  张三 \r\n")) << true
                                  << QString::fromUtf8("张三");
    QTest::newRow("in the application folder") << QByteArray("UserNam:li\r\n") << false << "li";
    QTest::newRow("no key empties the name") << QByteArray("x=1\r\n") << true << "";
    QTest::newRow("no file keeps the old name") << QByteArray("<none>") << true << "old";
}

void ScaleTableTest::sysData()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, dataFolder);
    QFETCH(QString, name);
    if (!dataFolder) QVERIFY(QDir(app("Data")).removeRecursively());
    if (bytes != "<none>") QVERIFY(putBytes(SysDataPath(), bytes));
    OperatorName = "old";
    LoadSysData();
    QCOMPARE(OperatorName, name);
}

void ScaleTableTest::netPath_data()
{
    QTest::addColumn<QString>("file");  // empty: none
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("path");
    QTest::newRow("Data") << "Data/NetPath.ini" << QByteArray("NetworkPath= /mnt/partner \r\n") << "/mnt/partner";
    QTest::newRow("lower-case data") << "data/NetPath.ini" << QByteArray("NetworkPath=/mnt/p\r\n") << "/mnt/p";
    QTest::newRow("no key") << "Data/NetPath.ini" << QByteArray("[x]\r\nPath=/mnt\r\n") << "";
    QTest::newRow("no file") << "" << QByteArray() << "";
}

void ScaleTableTest::netPath()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, path);
    if (!file.isEmpty()) QVERIFY(putBytes(app(file), bytes));
    QCOMPARE(ReadNetPath(), path);
}

QTEST_GUILESS_MAIN(ScaleTableTest)
#include "tst_scale_table.moc"
