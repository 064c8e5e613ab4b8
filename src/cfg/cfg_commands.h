#pragma once
// The subcommands of orvaplccfg: save the controller's settings to a file, compare, restore.
#include <QString>
#include <functional>

enum CfgExit { kCfgOk = 0, kCfgDiffers = 1, kCfgDeclined = 1, kCfgError = 2 };

// What a run talks through: the result on standard output, messages on standard error, a yes/no question,
// and the progress of the transfers.
struct CfgRun {
    QString port;      // "Com2", "2" or a device path; empty: the console's port of BLZConfig.dat
    bool yes = false;  // restore without asking
    QString from, to, scale;  // records: months "YYYY-MM" (empty: no bound) and one scale's name
    std::function<void(const QString&)> out;
    std::function<void(const QString&)> err;
    std::function<bool(const QString& question)> ask;
    // What is being done, how many of how many steps; done == total ends it.
    std::function<void(const QString& what, int done, int total)> progress;
};

// The station as the console finds it at start: names of CName.ini, the port of BLZConfig.dat, the
// language choice.
void CfgPrepare();

int CfgSave(const CfgRun& run, const QString& file);
// One file against the controller now, or two files.
int CfgDiff(const CfgRun& run, const QString& file, const QString& file2 = QString());
int CfgRestore(const CfgRun& run, const QString& file);
// The calibration records of the months asked, as CSV on standard output.
int CfgRecords(const CfgRun& run);
