#pragma once
// What the fuzz targets share: an application object for the code that needs one, and a scratch file in
// memory-backed storage, since several readers take a path rather than bytes.
#include <QByteArray>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QString>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

inline void FuzzAppInit()
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* app = new QCoreApplication(argc, argv);
    (void)app;
}

// A file that holds exactly these bytes, in /dev/shm when there is one; gone when the run ends.
inline QString FuzzFile(const QByteArray& bytes, const char* name = "in.txt")
{
    static std::string dir;
    static std::string names[8];
    static int used = 0;
    if (dir.empty()) {
        dir = (QDir(QStringLiteral("/dev/shm")).exists() ? std::string("/dev/shm") : std::string("/tmp")) +
              "/orva-fuzz-" + std::to_string(::getpid());
        QDir().mkpath(QString::fromStdString(dir));
        std::atexit([] {
            for (int i = 0; i < used; ++i) ::unlink((dir + "/" + names[i]).c_str());
            ::rmdir(dir.c_str());
        });
    }
    bool known = false;
    for (int i = 0; i < used; ++i) known = known || names[i] == name;
    if (!known && used < 8) names[used++] = name;
    const QString path = QString::fromStdString(dir + "/" + name);
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) || f.write(bytes) != bytes.size())
        std::abort();
    return path;
}

// A broken promise of the code under test: libFuzzer keeps the input that shows it.
#define FUZZ_CHECK(cond)                                                              \
    do {                                                                              \
        if (!(cond)) {                                                                \
            std::fprintf(stderr, "check failed: %s (%s:%d)\n", #cond, __FILE__, __LINE__); \
            std::abort();                                                             \
        }                                                                             \
    } while (0)
