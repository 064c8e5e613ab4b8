#include "shell/form_base.h"

#include "common/module1.h"
#include "common/form_access.h"
#include "common/lang.h"
#include "shell/link_trace_window.h"

#include <QApplication>
#include <QFontInfo>
#include <QFontMetrics>
#include <QEvent>
#include <QGuiApplication>
#include <QLineEdit>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QProxyStyle>
#include <QScreen>
#include <QShortcut>
#include <QTimer>

namespace {
QSize pictureSize(ButtonSize size)
{
    switch (size) {
    case ButtonSize::Large:
        return {150, 46};
    case ButtonSize::Tab:
        return {120, 34};
    case ButtonSize::Scale:
        return {124, 44};
    case ButtonSize::ExitIcon:
        return {32, 32};
    case ButtonSize::HelpIcon:
        return {28, 28};
    case ButtonSize::Small:
        break;
    }
    return {96, 32};
}

// Round marks for the lone images: a cross for exit, a question mark for help.
QPixmap paintMark(ButtonSize size, QColor fill, QColor edge, const QString& mark)
{
    const QSize s = pictureSize(size);
    QPixmap pm(s);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF r(1.5, 1.5, s.width() - 3, s.height() - 3);
    p.setBrush(fill);
    p.setPen(QPen(edge, 1.5));
    p.drawEllipse(r);
    p.setPen(QPen(Qt::white, 2.5, Qt::SolidLine, Qt::RoundCap));
    if (mark.isEmpty()) {
        const qreal m = s.width() * 0.32;
        p.drawLine(QPointF(m, m), QPointF(s.width() - m, s.height() - m));
        p.drawLine(QPointF(s.width() - m, m), QPointF(m, s.height() - m));
    } else {
        QFont f = p.font();
        f.setBold(true);
        f.setPixelSize(s.height() * 2 / 3);
        p.setFont(f);
        p.drawText(r, Qt::AlignCenter, mark);
    }
    return pm;
}

bool isLight(ButtonSize size) { return size == ButtonSize::Scale || size == ButtonSize::Tab; }

QPixmap paint(ButtonSize size, QColor top, QColor bottom, QColor edge)
{
    const QSize s = pictureSize(size);
    QPixmap pm(s);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    QLinearGradient g(0, 0, 0, s.height());
    g.setColorAt(0, top);
    g.setColorAt(1, bottom);
    QPainterPath path;
    path.addRoundedRect(QRectF(1, 1, s.width() - 2, s.height() - 2), 7, 7);
    p.fillPath(path, g);
    p.setPen(QPen(edge, 1.5));
    p.drawPath(path);
    // a soft highlight on the upper half
    QPainterPath shine;
    shine.addRoundedRect(QRectF(3, 3, s.width() - 6, s.height() / 2.0 - 3), 5, 5);
    p.fillPath(shine, QColor(255, 255, 255, 45));
    return pm;
}
}  // namespace

QPixmap ButtonPicture(ButtonSize size, bool bright)
{
    if (size == ButtonSize::ExitIcon)
        return bright ? paintMark(size, QColor(235, 90, 70), QColor(150, 40, 30), QString())
                      : paintMark(size, QColor(190, 60, 50), QColor(120, 30, 25), QString());
    if (size == ButtonSize::HelpIcon)
        return bright ? paintMark(size, QColor(232, 160, 30), QColor(150, 95, 0), QStringLiteral("?"))
                      : paintMark(size, QColor(50, 110, 185), QColor(20, 50, 100), QStringLiteral("?"));
    if (bright)
        return paint(size, QColor(255, 214, 110), QColor(222, 150, 20), QColor(150, 95, 0));
    // Buttons with dark captions stand on a light picture.
    if (isLight(size))
        return paint(size, QColor(250, 252, 255), QColor(196, 212, 234), QColor(95, 125, 170));
    return paint(size, QColor(110, 160, 215), QColor(40, 90, 160), QColor(20, 50, 100));
}

QPixmap GreyPicture(ButtonSize size) { return paint(size, QColor(200, 200, 200), QColor(150, 150, 150), QColor(110, 110, 110)); }

void ClickLabel::mousePressEvent(QMouseEvent* e)
{
    if (e->button() == Qt::LeftButton && isEnabled()) {
        down_ = true;
        emit pressed();
    }
    e->accept();
}

void ClickLabel::mouseReleaseEvent(QMouseEvent* e)
{
    if (e->button() == Qt::LeftButton && down_) {
        down_ = false;
        const bool over = rect().contains(e->position().toPoint());
        emit released();
        // A button let go outside the control takes the click back.
        if (over && isEnabled())
            emit clicked();
    }
    e->accept();
}

void ClickLabel::mouseMoveEvent(QMouseEvent* e)
{
    emit hovered();
    e->accept();
}

void ImageButton::setBright(bool bright) const
{
    if (image && image->isEnabled())
        image->setPixmap(ButtonPicture(size, bright));
}
void ImageButton::setVisible(bool v) const
{
    image->setVisible(v);
    if (caption)
        caption->setVisible(v);
}
void ImageButton::setEnabled(bool e) const
{
    image->setEnabled(e);
    if (caption)
        caption->setEnabled(e);
}
void ImageButton::setText(const QString& t) const
{
    if (!caption)
        return;
    caption->setText(t);
    // A translated caption may be longer than the picture: it shrinks rather than being cut. The size
    // goes into the style sheet, which would otherwise override a font set on the label.
    QString style = caption->property("baseStyle").toString();
    if (!caption->property("baseStyle").isValid()) {
        style = caption->styleSheet();
        caption->setProperty("baseStyle", style);
    }
    QFont f = QApplication::font();
    f.setBold(true);
    const int full = QFontInfo(f).pixelSize();
    int px = full;
    f.setPixelSize(px);
    const int room = caption->width() - 8;
    while (px > 9 && QFontMetrics(f).horizontalAdvance(t) > room)
        f.setPixelSize(--px);
    if (px < full)
        style += QStringLiteral(" QLabel { font-size: %1px; }").arg(px);
    caption->setStyleSheet(style);
}

FormBase::FormBase(const QString& name, QWidget* parent) : QWidget(parent, Qt::FramelessWindowHint | Qt::Window)
{
    setObjectName(name);
    setMouseTracking(true);
    setAttribute(Qt::WA_DeleteOnClose, false);
    setAutoFillBackground(true);
    QPalette pal = palette();
    pal.setColor(QPalette::Window, QColor(232, 238, 246));
    setPalette(pal);
    addHoverSurface(this);
    // The link's trace, beside every form.
    auto* trace = new QShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_L), this);
    connect(trace, &QShortcut::activated, this, [] { ShowLinkTraceWindow(); });
}

namespace {
ClickLabel* makePicture(QWidget* parent, const QString& name, const QRect& geometry, ButtonSize size)
{
    auto* image = new ClickLabel(parent);
    image->setObjectName(name);
    image->setGeometry(geometry);
    image->setScaledContents(true);
    image->setPixmap(ButtonPicture(size, false));
    image->setMouseTracking(true);
    image->setCursor(Qt::PointingHandCursor);
    return image;
}

ClickLabel* makeCaption(QWidget* parent, const QString& name, const QRect& geometry, const QString& text)
{
    auto* caption = new ClickLabel(text, parent);
    caption->setObjectName(name);
    caption->setGeometry(geometry);
    caption->setAlignment(Qt::AlignCenter);
    caption->setMouseTracking(true);
    caption->setCursor(Qt::PointingHandCursor);
    caption->raise();
    return caption;
}
}  // namespace

ImageButton FormBase::addImageButton(QWidget* parent, const QString& imageName, const QString& captionName,
                                     const QRect& geometry, ButtonSize size, const QString& text,
                                     std::function<void()> onClick)
{
    ImageButton b = addImage(parent, imageName, geometry, size, onClick);
    b.caption = makeCaption(parent, captionName, geometry, text);
    // Light pictures take the palette's text colour, so that a form can mark a caption by colour.
    b.caption->setStyleSheet(isLight(size) ? QStringLiteral("font-weight: bold;")
                                           : QStringLiteral("QLabel { color: white; font-weight: bold; } "
                                                            "QLabel:disabled { color: #d0d6de; }"));
    connect(b.caption, &ClickLabel::hovered, this, [this, b, parent] {
        resetHover(parent);
        b.setBright(true);
    });
    if (onClick)
        connect(b.caption, &ClickLabel::clicked, this, onClick);
    buttons_.last().second = b;
    return b;
}

ImageButton FormBase::addImage(QWidget* parent, const QString& imageName, const QRect& geometry, ButtonSize size,
                               std::function<void()> onClick)
{
    ImageButton b;
    b.size = size;
    b.image = makePicture(parent, imageName, geometry, size);
    connect(b.image, &ClickLabel::hovered, this, [this, b, parent] {
        resetHover(parent);
        b.setBright(true);
    });
    if (onClick)
        connect(b.image, &ClickLabel::clicked, this, onClick);
    buttons_.append({parent, b});
    return b;
}

ImageButton FormBase::addExitImage(const QString& imageName, const QPoint& topLeft, QWidget* parent)
{
    const QSize s = pictureSize(ButtonSize::ExitIcon);
    return addImage(parent ? parent : this, imageName, QRect(topLeft, s), ButtonSize::ExitIcon, [this] { askExit(); });
}

ImageButton FormBase::addTab(QWidget* parent, const QString& imageName, const QString& captionName,
                             const QRect& geometry, const QString& text, std::function<void()> onClick)
{
    ImageButton b;
    b.size = ButtonSize::Tab;
    b.image = makePicture(parent, imageName, geometry, ButtonSize::Tab);
    b.caption = makeCaption(parent, captionName, geometry, text);
    // No hover: the picture shows which tab is selected.
    b.image->setMouseTracking(false);
    b.caption->setMouseTracking(false);
    b.caption->setWordWrap(true);
    b.caption->setStyleSheet(QStringLiteral("font-weight: bold;"));
    if (onClick) {
        connect(b.image, &ClickLabel::clicked, this, onClick);
        connect(b.caption, &ClickLabel::clicked, this, onClick);
    }
    return b;
}

void FormBase::selectTab(const QList<ImageButton>& tabs, int index)
{
    for (int i = 0; i < tabs.size(); ++i) {
        const bool on = i == index;
        tabs[i].image->setPixmap(ButtonPicture(ButtonSize::Tab, on));
        QPalette p = tabs[i].caption->palette();
        p.setColor(QPalette::WindowText, on ? QColor(0, 0, 192) : QColor(64, 64, 64));
        tabs[i].caption->setPalette(p);
    }
}

QLabel* FormBase::addHelpTip(const QString& name, const QRect& geometry, QWidget* parent)
{
    auto* tip = new ClickLabel(parent ? parent : this);
    tip->setObjectName(name);
    tip->setGeometry(geometry);
    tip->setWordWrap(true);
    tip->setTextFormat(Qt::PlainText);
    tip->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    tip->setMargin(8);
    tip->setCursor(Qt::PointingHandCursor);
    tip->setStyleSheet(QStringLiteral("QLabel { background: #fffbe6; color: #303030; border: 1px solid #c9a640; }"));
    connect(tip, &ClickLabel::clicked, tip, &QWidget::hide);
    tip->hide();
    return tip;
}

void FormBase::showHelp(QLabel* tip, const QString& text)
{
    tip->setText(text);
    tip->show();
    tip->raise();
}

void FormBase::setTopMost(bool on)
{
    const bool wasVisible = isVisible();
    setWindowFlag(Qt::WindowStaysOnTopHint, on);
    if (wasVisible)
        show();  // changing the flags hides a window
}

void FormBase::unloadLater()
{
    hide();
    const QString name = objectName();
    QPointer<FormBase> self(this);
    // Queued on the application, not on the form: the form must not be deleted inside its own event.
    QTimer::singleShot(0, qApp, [self, name] {
        if (self && Forms::loaded(name) == self.data())
            Forms::unload(name);
    });
}

void FormBase::refuseWrongCode(int wrongCodes)
{
    MbIsOk = true;
    if (wrongCodes >= 5) {
        MbText = ComText(QStringLiteral("COM011"), QStringLiteral("密码错误已5次，程序将退出！"));
        MbIsError = true;
        ShowMbQuestion();
        unloadLater();
        Forms::unload(QStringLiteral("PLC"));
        EndProcessNow(0);
        return;
    }
    MbText = ComText(QStringLiteral("COM012"), QStringLiteral("密码错误!"));
    MbIsError = false;
    ShowMbQuestion();
}

void FormBase::addHoverSurface(QWidget* surface)
{
    surface->setMouseTracking(true);
    surface->installEventFilter(this);
    surfaces_.append(surface);
}

QFrame* FormBase::addPanel(QWidget* parent, const QString& name, const QRect& geometry, int radius)
{
    auto* f = new QFrame(parent);
    f->setObjectName(name);
    f->setGeometry(geometry);
    QString id = name;
    id.replace(QLatin1Char('('), QLatin1String("\\(")).replace(QLatin1Char(')'), QLatin1String("\\)"));
    f->setStyleSheet(QStringLiteral("QFrame#%1 { background: white; border: 1px solid #9fb3cc; border-radius: %2px; }")
                         .arg(id)
                         .arg(radius));
    return f;
}

QLabel* FormBase::addTitle(const QString& name, const QString& text, const QRect& geometry, int pixelSize,
                           QWidget* parent)
{
    QLabel* l = addLabel(name, text, geometry, parent);
    l->setAlignment(Qt::AlignCenter);
    l->setStyleSheet(QStringLiteral("font-size: %1px; font-weight: bold; color: #17407a;").arg(pixelSize));
    return l;
}

QLabel* FormBase::addLabel(const QString& name, const QString& text, const QRect& geometry, QWidget* parent)
{
    auto* l = new QLabel(text, parent ? parent : this);
    l->setObjectName(name);
    l->setGeometry(geometry);
    return l;
}

void FormBase::askExit()
{
    MbText = LangText(QStringLiteral("LANPLCFORM"), QStringLiteral("PLC039"), QStringLiteral("是否退出秤控台?"));
    MbIsOk = false;
    ShowMbQuestion();
    if (MbResult && ExitSystemHook)
        ExitSystemHook();
}

void FormBase::setStatus(QLabel* label, const QString& text, bool green)
{
    label->setText(text);
    QPalette p = label->palette();
    p.setColor(QPalette::WindowText, green ? QColor(0, 0x80, 0) : QColor(0xFF, 0, 0));
    label->setPalette(p);
    label->setVisible(true);
}

namespace {
// The application's style in all else; the style of the platform would draw a dot.
class StarStyle : public QProxyStyle {
public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returnData) const override
    {
        if (hint == SH_LineEdit_PasswordCharacter)
            return '*';
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
};
}  // namespace

void FormBase::showStars(QLineEdit* box)
{
    auto* style = new StarStyle;
    style->setParent(box);
    box->setStyle(style);
    box->setEchoMode(QLineEdit::Password);
}

void FormBase::resetHover(QWidget* surface)
{
    for (const auto& [owner, b] : buttons_)
        if (owner == surface)
            b.setBright(false);
}

void FormBase::mousePressEvent(QMouseEvent* e)
{
    if (e->button() == Qt::LeftButton) {
        dragging_ = true;
        dragStart_ = e->position().toPoint();
    }
}

void FormBase::mouseMoveEvent(QMouseEvent* e)
{
    resetHover(this);
    if (!dragging_)
        return;
    const QPoint cursor = e->globalPosition().toPoint();
    const QScreen* screen = QGuiApplication::primaryScreen();
    // The form must not be lost below the screen.
    if (screen && cursor.y() >= screen->geometry().height() - 100)
        return;
    move(cursor - dragStart_);
}

// A release outside the form, where the cursor left it behind, keeps the drag on until the next
// release over it.
void FormBase::mouseReleaseEvent(QMouseEvent* e)
{
    if (rect().contains(e->position().toPoint()))
        dragging_ = false;
}

void FormBase::changeEvent(QEvent* e)
{
    if (e->type() == QEvent::ActivationChange && isActiveWindow())
        CurrentForm = objectName();
    QWidget::changeEvent(e);
}

bool FormBase::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseMove) {
        if (auto* w = qobject_cast<QWidget*>(watched); w && surfaces_.contains(w))
            resetHover(w);
    }
    return QWidget::eventFilter(watched, event);
}
