#pragma once
class QApplication;

// Font and style shared by the console and its form tests, so that both show the same.
void InstallAppLook(QApplication& app);
// Makes every form known by its name; each is created on first use.
void RegisterForms();
// SIGTERM, SIGHUP and SIGINT (shutdown, logout, Ctrl+C) end the console as its exit button does:
// configuration saved, port closed. The signal only wakes the event loop; the work is done there.
void ExitOnTerminationSignals();

// Filled by each subsystem with its own forms.
void RegisterParamsForms();
void RegisterPlantForms();
void RegisterCalibrationForms();
