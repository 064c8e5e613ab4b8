#include "common/lang.h"

#include "common/app_paths.h"
#include "common/module1.h"
#include "common/own_text.h"
#include "common/profile.h"
#include "common/vbtext.h"

#include <QFile>

#include <sys/stat.h>

namespace {

// What tells a file apart from its earlier self: a save replaces it (new inode) or changes size or time.
struct FileStamp {
    bool present = false;
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec modified{};
    bool operator==(const FileStamp& o) const
    {
        return present == o.present && device == o.device && inode == o.inode && size == o.size &&
               modified.tv_sec == o.modified.tv_sec && modified.tv_nsec == o.modified.tv_nsec;
    }
};

FileStamp stampOf(const QString& path)
{
    struct stat st {};
    if (::stat(QFile::encodeName(path).constData(), &st) != 0) return {};
    return {true, st.st_dev, st.st_ino, st.st_size, st.st_mtim};
}

// The language file, read once: every caption of every form is looked up in it.
struct LanguageCache {
    QString path;
    short langNo = 0;
    FileStamp stamp;
    std::shared_ptr<const ProfileIndex> index;
};
LanguageCache& cache()
{
    static LanguageCache c;
    return c;
}

const ProfileIndex* languageIndex()
{
    LanguageCache& c = cache();
    const FileStamp now = stampOf(ProfileFile);
    if (c.path != ProfileFile || c.langNo != LangNo || !(c.stamp == now)) {
        c.index.reset();  // the old one goes before the new one is read
        c.path = ProfileFile;
        c.langNo = LangNo;
        c.stamp = now;
        if (now.present) c.index = ProfileIndex::load(ProfileFile);
    }
    return c.index.get();
}

}  // namespace

QString LangText(const QString& section, const QString& key, const QString& deflt)
{
    if (ProfileFile.isEmpty())
        return deflt;
    return ProfileIndex::read(languageIndex(), section, key + QLatin1Char('-') + QString::number(LangNo), deflt);
}

QString ComText(const QString& key, const QString& deflt) { return LangText(LangCommon, key, deflt); }

QString LinkFaultText(const QString& port)
{
    return ComText(QStringLiteral("COM016"), QStringLiteral("通讯发生错误请检查：")) + QLatin1Char('\n') +
           ComText(QStringLiteral("COM017"), QStringLiteral("1、下位机是否已断电；")) + QLatin1Char('\n') +
           ComText(QStringLiteral("COM018"), QStringLiteral("2、下位机是否正常运行；")) + QLatin1Char('\n') +
           ComText(QStringLiteral("COM019"), QStringLiteral("3、通讯线是否接在端口:")) + port + QLatin1Char(',') +
           ComText(QStringLiteral("COM020"), QStringLiteral("且接触良好。"));
}

QString LangSelFile() { return AppPaths::inApp(QStringLiteral("\\Lang\\PLCCOMLANSEL.ini")); }
QString LangTextsFile() { return AppPaths::inApp(QStringLiteral("\\Lang\\PLCCOMLANGUAGE.ini")); }

short LanguageNumber(const QString& text)
{
    const double v = Val(text);
    // Only the three languages there are; anything else, however large, is Chinese.
    if (!(v > 0.5 && v < 3.5)) return 1;
    return CInt(v);
}

void LoadLanguageChoice()
{
    LangNo = LanguageNumber(ReadProfileValue(QStringLiteral("PLCCOMLANSEL"), QStringLiteral("LANSEL"),
                                             QStringLiteral("1"), LangSelFile()));
    ProfileFile = LangTextsFile();
    cache() = LanguageCache{};
    InstallOwnTranslation();
}
