#pragma once

#include <QCoreApplication>
#include <QMessageBox>
#include <QString>
#include <QVector>
#include <memory>

// The program's message boxes: every user-visible message goes through these.
// Tests queue answers with setNextAnswer(); a queued answer is returned at once instead of
// opening the box, and the message is kept in answeredMessages() for the test to read.
class CustomMessageBox
{
    Q_DECLARE_TR_FUNCTIONS(CustomMessageBox)

public:
    enum class Kind { Information, Question, Critical };

    struct Message
    {
        Kind kind;
        QString title;
        QString text;
    };

    static QMessageBox::StandardButton question(QWidget* parent,
                                                const QString& title,
                                                const QString& text,
                                                QMessageBox::StandardButtons buttons
                                                = QMessageBox::StandardButtons(QMessageBox::Yes | QMessageBox::No),
                                                QMessageBox::StandardButton defaultButton = QMessageBox::NoButton);
    static QMessageBox::StandardButton information(QWidget* parent, const QString& title, const QString& text);
    static QMessageBox::StandardButton critical(QWidget* parent, const QString& title, const QString& text);
    // What the pages say when a request was refused because the service's certificate did not verify.
    static QString unverifiedServiceText();
    // Opens the link in the user's browser; when none can be opened, or while the kill switch blocks the
    // Internet, shows the link to be copied from the box.
    static void openLink(QWidget* parent, const QString& url);
    static void setInternetBlocked(bool blocked);

    // The styled box, not yet shown. An empty title becomes the product name.
    static std::unique_ptr<QMessageBox> create(Kind kind,
                                               QWidget* parent,
                                               const QString& title,
                                               const QString& text,
                                               QMessageBox::StandardButtons buttons,
                                               QMessageBox::StandardButton defaultButton);

    static void setNextAnswer(QMessageBox::StandardButton answer);
    static int pendingAnswers();
    static QVector<Message> answeredMessages();
    static void clearAnswers();

private:
    static QMessageBox::StandardButton show(Kind kind,
                                            QWidget* parent,
                                            const QString& title,
                                            const QString& text,
                                            QMessageBox::StandardButtons buttons,
                                            QMessageBox::StandardButton defaultButton);
};
