#include "CustomMessageBox.h"

#include <QAbstractButton>
#include <QDebug>
#include <QDesktopServices>
#include <QList>
#include <QUrl>

#include "WidgetStyle.h"

namespace {

bool internetBlocked = false;

QList<QMessageBox::StandardButton>& answerQueue()
{
    static QList<QMessageBox::StandardButton> queue;
    return queue;
}

QVector<CustomMessageBox::Message>& answered()
{
    static QVector<CustomMessageBox::Message> messages;
    return messages;
}

QString pictureFor(CustomMessageBox::Kind kind)
{
    switch (kind) {
    case CustomMessageBox::Kind::Question:
        return QStringLiteral(":/resources/question-sign-in-circles.svg");
    case CustomMessageBox::Kind::Critical:
        return QStringLiteral(":/resources/attention-sign-in-circles.svg");
    case CustomMessageBox::Kind::Information:
        break;
    }
    return QStringLiteral(":/resources/logo.svg");
}

} // namespace

QMessageBox::StandardButton CustomMessageBox::question(QWidget* parent,
                                                       const QString& title,
                                                       const QString& text,
                                                       QMessageBox::StandardButtons buttons,
                                                       QMessageBox::StandardButton defaultButton)
{
    return show(Kind::Question, parent, title, text, buttons, defaultButton);
}

QMessageBox::StandardButton CustomMessageBox::information(QWidget* parent, const QString& title, const QString& text)
{
    return show(Kind::Information, parent, title, text, QMessageBox::Ok, QMessageBox::Ok);
}

QMessageBox::StandardButton CustomMessageBox::critical(QWidget* parent, const QString& title, const QString& text)
{
    return show(Kind::Critical, parent, title, text, QMessageBox::Ok, QMessageBox::Ok);
}

QString CustomMessageBox::unverifiedServiceText()
{
    return tr("The identity of the Velmora service could not be verified, so nothing was sent to it.");
}

void CustomMessageBox::setInternetBlocked(bool blocked)
{
    internetBlocked = blocked;
}

void CustomMessageBox::openLink(QWidget* parent, const QString& url)
{
    // Only the program's own requests get past the kill switch's rules: a browser would show an error page.
    if (internetBlocked) {
        information(parent,
                    tr("Open in a browser"),
                    tr("The kill switch blocks the Internet while you are not connected, so this page cannot load "
                       "now. Connect first, or turn the kill switch off, then open this link:")
                        + "\n\n" + url);
        return;
    }
    if (QDesktopServices::openUrl(QUrl(url)))
        return;
    qDebug() << "No browser opened the link";
    information(
        parent, tr("Open in a browser"), tr("No web browser could be opened. Copy this link into one:") + "\n\n" + url);
}

std::unique_ptr<QMessageBox> CustomMessageBox::create(Kind kind,
                                                      QWidget* parent,
                                                      const QString& title,
                                                      const QString& text,
                                                      QMessageBox::StandardButtons buttons,
                                                      QMessageBox::StandardButton defaultButton)
{
    auto box = std::make_unique<QMessageBox>(parent);
    box->setStyleSheet(WidgetStyle::sheet());
    box->setWindowTitle(title.isEmpty() ? QStringLiteral("Tavrin") : title);
    box->setText(text);
    // The text can be copied, e.g. a link that no browser opened.
    box->setTextInteractionFlags(Qt::TextSelectableByMouse);
    box->setStandardButtons(buttons);
    if (defaultButton != QMessageBox::NoButton)
        box->setDefaultButton(defaultButton);
    box->setIconPixmap(QIcon(pictureFor(kind)).pixmap(QSize(48, 48)));

    const struct
    {
        QMessageBox::StandardButton button;
        QString text;
    } texts[] = {
        {QMessageBox::Yes, tr("Yes")},
        {QMessageBox::No, tr("No")},
        {QMessageBox::Ok, tr("Ok")},
        {QMessageBox::Cancel, tr("Cancel")},
    };
    for (const auto& entry : texts) {
        if (QAbstractButton* button = box->button(entry.button)) {
            button->setText(entry.text);
            button->setIcon(QIcon());
        }
    }
    return box;
}

QMessageBox::StandardButton CustomMessageBox::show(Kind kind,
                                                   QWidget* parent,
                                                   const QString& title,
                                                   const QString& text,
                                                   QMessageBox::StandardButtons buttons,
                                                   QMessageBox::StandardButton defaultButton)
{
    if (!answerQueue().isEmpty()) {
        answered().append({kind, title.isEmpty() ? QStringLiteral("Tavrin") : title, text});
        return answerQueue().takeFirst();
    }
    std::unique_ptr<QMessageBox> box = create(kind, parent, title, text, buttons, defaultButton);
    box->exec();
    const auto pressed = box->standardButton(box->clickedButton());
    // A box closed by its window button counts as the escape answer, or "No" when there is none.
    if (pressed == QMessageBox::NoButton)
        return buttons.testFlag(QMessageBox::No) ? QMessageBox::No : QMessageBox::Ok;
    return pressed;
}

void CustomMessageBox::setNextAnswer(QMessageBox::StandardButton answer)
{
    answerQueue().append(answer);
}

int CustomMessageBox::pendingAnswers()
{
    return answerQueue().size();
}

QVector<CustomMessageBox::Message> CustomMessageBox::answeredMessages()
{
    return answered();
}

void CustomMessageBox::clearAnswers()
{
    answerQueue().clear();
    answered().clear();
}
