// The name and bin tabs of BcBut: the names of the scales and bins, their file, the spool copy of the
// first names and the copies for the partner station and the production control system.
#include "calibration/bc_but.h"
#include "calibration/cname_files.h"
#include "common/error_log.h"
#include "common/form_access.h"
#include "common/lang.h"
#include "common/module1.h"
#include "common/own_text.h"
#include "common/scale_table.h"
#include "common/vbtext.h"

#include <QLineEdit>

namespace {
// What the bins of a scale are called while the scale itself is not in use.
constexpr const char* kScaleBases[14] = {
    QT_TRANSLATE_NOOP("OwnText", "骨料1"),   QT_TRANSLATE_NOOP("OwnText", "骨料2"),
    QT_TRANSLATE_NOOP("OwnText", "骨料3"),   QT_TRANSLATE_NOOP("OwnText", "骨料4"),
    QT_TRANSLATE_NOOP("OwnText", "骨料5"),   QT_TRANSLATE_NOOP("OwnText", "骨料6"),
    QT_TRANSLATE_NOOP("OwnText", "外加粉"),  QT_TRANSLATE_NOOP("OwnText", "水秤"),
    QT_TRANSLATE_NOOP("OwnText", "水泥"),    QT_TRANSLATE_NOOP("OwnText", "粉灰"),
    QT_TRANSLATE_NOOP("OwnText", "矿粉"),    QT_TRANSLATE_NOOP("OwnText", "外加剂1"),
    QT_TRANSLATE_NOOP("OwnText", "外加剂2"), QT_TRANSLATE_NOOP("OwnText", "外加剂3")};

// The scale a bin belongs to and its counter behind "M"; 0 where the scale has one bin and the bin
// takes the scale's caption as it stands. The second water has a caption of its own.
struct BinCaption {
    int scale, counter;
};
constexpr BinCaption kBinCaptions[22] = {
    {0, 0},  {1, 0},  {2, 0},  {3, 0}, {4, 0},  {5, 0},  {6, 1},  {6, 2},  {7, 0},  {8, 1},  {8, 2},
    {8, 3},  {8, 4},  {9, 1},  {9, 2}, {9, 3},  {10, 1}, {10, 2}, {11, 0}, {12, 0}, {13, 0}, {-1, 0},
};

bool yesNo(const QString& text)
{
    MbText = text;
    MbIsOk = false;
    MbIsError = false;
    ShowMbQuestion();
    return MbResult;
}

// A write the file system refused is told and logged with the system's text. The names go back to what the
// file holds, so that nothing is copied and the calibration values stay under the names on disk.
bool written(const FileError& e, const char* routine, const QString& failed)
{
    if (e.ok())
        return true;
    LogProgramError(QStringLiteral("BcBut"), QLatin1String(routine), QString::number(e.number), e.logText());
    ShowOkBox(failed + QLatin1Char('\n') + e.logText(), true);
    return false;
}

QLineEdit* nameBox(QWidget* parent, const QString& name, const QRect& at)
{
    auto* box = new QLineEdit(parent);
    box->setObjectName(name);
    box->setGeometry(at);
    return box;
}
}  // namespace

void BcBut::buildNameTabs()
{
    // Scales in two columns of seven, bins in three columns of eight, in the order of their index.
    for (int i = 0; i < 14; ++i) {
        const int x = 24 + 300 * (i / 7), y = 22 + 40 * (i % 7);
        LblCansd[size_t(i)] = addLabel(IndexedName("LblCansd", i), QString(), {x, y, 110, 28}, PicBcBut[1]);
        LblCansd[size_t(i)]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        TxtDCansd[size_t(i)] = nameBox(PicBcBut[1], IndexedName("TxtDCansd", i), {x + 118, y, 150, 28});
    }
    for (int i = 0; i < 22; ++i) {
        const int x = 12 + 202 * (i / 8), y = 16 + 38 * (i % 8);
        LblCansdName[size_t(i)] = addLabel(IndexedName("LblCansdName", i), QString(), {x, y, 88, 28}, PicBcBut[2]);
        LblCansdName[size_t(i)]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        TxtDCansdName[size_t(i)] = nameBox(PicBcBut[2], IndexedName("TxtDCansdName", i), {x + 94, y, 100, 28});
    }
}

// An entry whose name is empty is not in use: its label is disabled and its box empty.
void BcBut::fillNameBoxes()
{
    const auto fill = [](QLabel* label, QLineEdit* box, const QString& name) {
        const QString n = Trim(name);
        label->setEnabled(!n.isEmpty());
        box->setEnabled(!n.isEmpty());
        box->setText(n);
    };
    for (size_t i = 0; i < TxtDCansd.size(); ++i)
        fill(LblCansd[i], TxtDCansd[i], ScaleName[i]);
    for (size_t i = 0; i < TxtDCansdName.size(); ++i)
        fill(LblCansdName[i], TxtDCansdName[i], BinName[i]);
    rebuildNameCaptions();
}

// The bins are called after their scale, so a renamed scale renames the captions of its bins.
void BcBut::rebuildNameCaptions()
{
    const QString unused = text("BCBUT004", "未使用");
    for (size_t i = 0; i < LblCansd.size(); ++i)
        LblCansd[i]->setText(LblCansd[i]->isEnabled() ? Trim(ScaleName[i]) : unused);
    for (size_t i = 0; i < LblCansdName.size(); ++i) {
        const BinCaption& c = kBinCaptions[i];
        QString caption = unused;
        if (LblCansdName[i]->isEnabled() && c.scale < 0) {
            caption = OwnText::tr("清水");
        } else if (LblCansdName[i]->isEnabled()) {
            const auto s = size_t(c.scale);
            caption = LblCansd[s]->isEnabled() ? Trim(ScaleName[s]) : OwnText::tr(kScaleBases[s]);
            if (c.counter > 0)
                caption += QLatin1Char('M') + QString::number(c.counter);
        }
        LblCansdName[i]->setText(caption);
    }
    for (QLabel* l : LblCansd)
        l->setToolTip(l->text());
    for (QLabel* l : LblCansdName)
        l->setToolTip(l->text());
}

void BcBut::bdOkClicked()
{
    if (nameTab_)
        setScaleNames();
    else if (binTab_)
        setBinNames();
}

void BcBut::setScaleNames()
{
    for (size_t i = 0; i < TxtDCansd.size(); ++i) {
        if (LblCansd[i]->isEnabled() && Trim(TxtDCansd[i]->text()).isEmpty()) {
            ShowOkBox(text("BCBUT037", "电子秤名称不能为空!"), true);
            TxtDCansd[i]->setFocus();
            return;
        }
    }
    if (!yesNo(text("BCBUT038", "是否设定当前电子秤名称?") + QLatin1Char('\n') +
               text("BCBUT039", "注意:设定之前必须主从机都要开机且网络连接正常,否则不能同步更改的数据!")))
        return;
    const auto scales = ScaleName;
    const auto bins = BinName;
    // The first naming writes the bins too, and its file becomes the factory set in the spool.
    FileError e = WriteCNameIni();
    const char* routine = "WriteCNameIni";
    if (e.ok() && CNameMissing) {
        e = WriteCNameSepIni();
        routine = "WriteCNameSepIni";
    }
    if (!written(e, routine, OwnText::tr("电子秤名称设定失败!"))) {
        ScaleName = scales;
        BinName = bins;
        LoadCNameIni();
        return;
    }
    if (CNameMissing)
        BackupCNameIni();
    ShowOkBox(text("BCBUT040", "电子秤名称设定已成功完成!"), false);
    rebuildNameCaptions();
    networkCopy();
    if (firstNaming_) {
        firstNaming_ = false;
        CNameMissing = false;
        ImgReturn.setVisible(true);
    }
}

void BcBut::setBinNames()
{
    for (size_t i = 0; i < TxtDCansdName.size(); ++i) {
        if (LblCansdName[i]->isEnabled() && Trim(TxtDCansdName[i]->text()).isEmpty()) {
            ShowOkBox(text("BCBUT041", "料仓名称不能为空!"), true);
            TxtDCansdName[i]->setFocus();
            return;
        }
    }
    if (!yesNo(text("BCBUT042", "是否设定当前料仓名称?") + QLatin1Char('\n') +
               text("BCBUT039", "注意:设定之前必须主从机都要开机且网络连接正常,否则不能同步更改的数据!")))
        return;
    const auto bins = BinName;
    if (!written(WriteCNameSepIni(), "WriteCNameSepIni", OwnText::tr("料仓名称设定失败!"))) {
        BinName = bins;
        LoadCNameIni();
        return;
    }
    ShowOkBox(text("BCBUT043", "料仓名称设定已成功完成!"), false);
    networkCopy();
}

// A name that is not in use is written empty, whatever its box holds.
FileError BcBut::WriteCNameIni()
{
    for (size_t i = 0; i < TxtDCansd.size(); ++i)
        ScaleName[i] = LblCansd[i]->isEnabled() ? Trim(TxtDCansd[i]->text()) : QString();
    return WriteScaleNamesToFile();
}

FileError BcBut::WriteCNameSepIni()
{
    for (size_t i = 0; i < TxtDCansdName.size(); ++i)
        BinName[i] = LblCansdName[i]->isEnabled() ? Trim(TxtDCansdName[i]->text()) : QString();
    return WriteBinNamesToFile();
}

// The local file stays as set when the copy fails: the operator is asked to set the names again. These
// messages, the failed restore and "清水" have no number in the language file.
void BcBut::networkCopy()
{
    const NetCopyResult r = CopyCNameToNetwork();
    if (r.outcome == NetCopy::NoPath)
        ShowOkBox(OwnText::tr("网络路径不存在，更改的数据未能同步，请先保证生产控制系统数据能正常同步后再重新设定！"),
                  true);
    else if (r.outcome == NetCopy::Failed && r.error.number == 52)
        ShowOkBox(OwnText::tr("网络未联接，更改的数据未能同步，请在网络正常时重新设定！"), true);
    else if (r.outcome == NetCopy::Failed)
        ShowOkBox(QString::number(r.error.number) + QLatin1Char(':') + r.error.description, true);
}

void BcBut::restoreFactoryNames()
{
    if (!yesNo(text("BCBUT044", "是否恢复出厂设定的电子秤名称?")))
        return;
    const Restore r = RestoreCNameFromSpool();
    if (r != Restore::Done) {
        ShowOkBox(OwnText::tr("恢复出厂设定失败!"), true);
        if (r == Restore::CopyFailed)
            BackupCNameIni();
        return;
    }
    ShowOkBox(text("BCBUT045", "恢复出厂设定已成功完成!"), false);
    LoadCNameIni();
    LoadZDTimeIni();
    fillNameBoxes();
    networkCopy();
}
