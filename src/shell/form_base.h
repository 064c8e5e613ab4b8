#pragma once
// What every form shares: a frameless window dragged by its surface, image buttons whose caption label
// forwards the click and whose picture brightens under the mouse, the exit question, the current-form name.
#include <QFrame>
#include <QLabel>
#include <QList>
#include <QPixmap>
#include <QPoint>
#include <QWidget>
#include <functional>

class QLineEdit;

// Scale: the light buttons of a list of scales, with dark captions. ExitIcon and HelpIcon: lone images.
enum class ButtonSize { Large, Small, Tab, Scale, ExitIcon, HelpIcon };

// Our own pictures of the image buttons: plain and selected, large and small.
QPixmap ButtonPicture(ButtonSize size, bool bright);
QPixmap GreyPicture(ButtonSize size);

// A caption or image that acts on a click: the button goes down and comes up over it. The few controls
// that act as the button goes down listen to pressed and released instead.
class ClickLabel : public QLabel {
    Q_OBJECT
public:
    using QLabel::QLabel;
signals:
    void clicked();
    void pressed();
    void released();
    void hovered();

protected:
    void mousePressEvent(QMouseEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;

private:
    bool down_ = false;
};

// An image and its caption label; a click on either runs the same handler.
struct ImageButton {
    ClickLabel* image = nullptr;
    ClickLabel* caption = nullptr;
    ButtonSize size = ButtonSize::Small;
    void setBright(bool bright) const;
    void setVisible(bool v) const;
    void setEnabled(bool e) const;
    void setText(const QString& t) const;
    bool isVisible() const { return image && !image->isHidden(); }
};

class FormBase : public QWidget {
    Q_OBJECT
public:
    explicit FormBase(const QString& name, QWidget* parent = nullptr);

    // Creates the pair on parent at geometry (pixels), named by their control names.
    ImageButton addImageButton(QWidget* parent, const QString& imageName, const QString& captionName,
                               const QRect& geometry, ButtonSize size, const QString& text,
                               std::function<void()> onClick);
    // A lone image (the exit image, a help mark) that brightens under the mouse like the pairs.
    ImageButton addImage(QWidget* parent, const QString& imageName, const QRect& geometry, ButtonSize size,
                         std::function<void()> onClick);
    // The exit image: the shared exit question on a click.
    ImageButton addExitImage(const QString& imageName, const QPoint& topLeft, QWidget* parent = nullptr);
    // A tab: the pair without hover, since its picture shows which tab is selected.
    ImageButton addTab(QWidget* parent, const QString& imageName, const QString& captionName, const QRect& geometry,
                       const QString& text, std::function<void()> onClick);
    // The selected tab is bright with a dark blue caption, the others plain and grey.
    static void selectTab(const QList<ImageButton>& tabs, int index);
    // A help pop-up: the text ends in its close mark, and a click anywhere on it closes it.
    QLabel* addHelpTip(const QString& name, const QRect& geometry, QWidget* parent = nullptr);
    static void showHelp(QLabel* tip, const QString& text);
    // Moving the mouse over this surface sets all its buttons back to the plain picture.
    void addHoverSurface(QWidget* surface);
    // A white panel with a rounded border: the pages, frames and panels the controls sit on.
    static QFrame* addPanel(QWidget* parent, const QString& name, const QRect& geometry, int radius = 8);
    // A centred dark blue heading: the form's title or a panel's.
    QLabel* addTitle(const QString& name, const QString& text, const QRect& geometry, int pixelSize,
                     QWidget* parent = nullptr);
    // A label with its control name; parent defaults to the form.
    QLabel* addLabel(const QString& name, const QString& text, const QRect& geometry, QWidget* parent = nullptr);
    // The shared exit question; on Yes the program ends through the main form's exit path.
    void askExit();

    static void setStatus(QLabel* label, const QString& text, bool green);
    // Password boxes show "*" for each character, whatever the style would draw.
    static void showStars(QLineEdit* box);
    // Forms that must stay above the others.
    void setTopMost(bool on);
    // Unloading from inside one's own click would delete the widget still delivering the click: the
    // form hides now and is destroyed as soon as the event is done.
    void unloadLater();
    // A wrong code at a gate, the count already raised: "密码错误!", and at the fifth the end of the run at
    // once, without the exit path, so that nothing is saved on the way out.
    void refuseWrongCode(int wrongCodes);
    bool isDragging() const { return dragging_; }

protected:
    void mousePressEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;
    void changeEvent(QEvent* e) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void resetHover(QWidget* surface);
    QList<QPair<QWidget*, ImageButton>> buttons_;
    QList<QWidget*> surfaces_;
    bool dragging_ = false;
    QPoint dragStart_;
};

// The exit path of every form; set by the main form.
inline std::function<void()> ExitSystemHook;
