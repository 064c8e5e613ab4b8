#include "shell/form_base.h"

#include "common/module1.h"
#include "shell/lang.h"

#include <QEvent>
#include <QGuiApplication>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>

namespace {
QSize pictureSize(ButtonSize size)
{
    switch (size) {
    case ButtonSize::Large:
        return {150, 46};
    case ButtonSize::Tab:
        return {120, 34};
    case ButtonSize::Small:
        break;
    }
    return {96, 32};
}

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
    if (bright)
        return paint(size, QColor(255, 214, 110), QColor(222, 150, 20), QColor(150, 95, 0));
    return paint(size, QColor(110, 160, 215), QColor(40, 90, 160), QColor(20, 50, 100));
}

QPixmap GreyPicture(ButtonSize size) { return paint(size, QColor(200, 200, 200), QColor(150, 150, 150), QColor(110, 110, 110)); }

void ClickLabel::mousePressEvent(QMouseEvent* e)
{
    if (e->button() == Qt::LeftButton && isEnabled())
        emit clicked();
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
    caption->setVisible(v);
}
void ImageButton::setEnabled(bool e) const
{
    image->setEnabled(e);
    caption->setEnabled(e);
}
void ImageButton::setText(const QString& t) const { caption->setText(t); }

FormBase::FormBase(const QString& name, QWidget* parent) : QWidget(parent, Qt::FramelessWindowHint | Qt::Window)
{
    setObjectName(name);
    setMouseTracking(true);
    setAttribute(Qt::WA_DeleteOnClose, false);
}

ImageButton FormBase::addImageButton(QWidget* parent, const QString& imageName, const QString& captionName,
                                     const QRect& geometry, ButtonSize size, const QString& text,
                                     std::function<void()> onClick)
{
    ImageButton b;
    b.size = size;
    b.image = new ClickLabel(parent);
    b.image->setObjectName(imageName);
    b.image->setGeometry(geometry);
    b.image->setScaledContents(true);
    b.image->setPixmap(ButtonPicture(size, false));
    b.image->setMouseTracking(true);
    b.image->setCursor(Qt::PointingHandCursor);
    b.caption = new ClickLabel(text, parent);
    b.caption->setObjectName(captionName);
    b.caption->setGeometry(geometry);
    b.caption->setAlignment(Qt::AlignCenter);
    b.caption->setMouseTracking(true);
    b.caption->setCursor(Qt::PointingHandCursor);
    b.caption->setStyleSheet(QStringLiteral("color: white; font-weight: bold;"));
    b.caption->raise();
    auto bright = [this, b, parent] {
        resetHover(parent);
        b.setBright(true);
    };
    connect(b.image, &ClickLabel::hovered, this, bright);
    connect(b.caption, &ClickLabel::hovered, this, bright);
    if (onClick) {
        connect(b.image, &ClickLabel::clicked, this, onClick);
        connect(b.caption, &ClickLabel::clicked, this, onClick);
    }
    buttons_.append({parent, b});
    return b;
}

void FormBase::addHoverSurface(QWidget* surface)
{
    surface->setMouseTracking(true);
    surface->installEventFilter(this);
    surfaces_.append(surface);
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

void FormBase::mouseReleaseEvent(QMouseEvent*) { dragging_ = false; }

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
