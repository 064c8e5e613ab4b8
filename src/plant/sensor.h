#pragma once
// Sensor configuration: the total load of the sensors under each of the fourteen scales, D200 to D213,
// in kilograms with as many decimals as the scale weighs with. Read once at load, written as one block.
#include "link/live_data.h"
#include "shell/form_base.h"

#include <array>

class QFrame;
class QLineEdit;

// The values as first shown after a read: what the return compares with.
inline std::array<double, 14>& SavedSensor = SensorBaseline;

class Sensor : public FormBase {
    Q_OBJECT
public:
    Sensor();

    // Tool tips with the range of each row, and every field in its row's format.
    void FormatSensorFields();

    std::array<QLabel*, 14> LblCansd{};
    std::array<QLineEdit*, 14> TxtDCansd{};
    std::array<QLineEdit*, 14> TxtDCansdMulTen{};  // the register values, as decimal text
    QLabel* LbLCssdS = nullptr;

protected:
    void showEvent(QShowEvent* e) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QString text(const char* key, const char* deflt) const;
    void loadCaptions();
    void loadNames();
    void readSensors();
    void okClicked();
    void defaultClicked();
    void returnClicked();

    QLabel *lblFormTitle = nullptr, *LblUnit = nullptr;
    QFrame* PicSensor = nullptr;
    ImageButton ImgBd, ImgBdOk, cmdDefault, ImgReturn, ImageExit;
};
