#include "ShowLog.h"

#include <QEvent>
#include <QScrollBar>
#include <QTextBrowser>
#include <QTextCursor>
#include <QVBoxLayout>

#include "WidgetStyle.h"

ShowLog::ShowLog(QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_browser(new QTextBrowser(this))
{
    setObjectName(QStringLiteral("ShowLog"));
    setStyleSheet(WidgetStyle::sheet());
    m_browser->setReadOnly(true);
    m_browser->setStyleSheet(QStringLiteral("font: 12px;"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 10, 10, 10);
    layout->addWidget(m_browser);
    resize(560, 360);
    retranslate();
}

QString ShowLog::plainText() const
{
    return m_browser->toPlainText();
}

QString ShowLog::messageOf(const QString& line)
{
    // "time,flags,message": the message keeps its own commas, as in "PUSH_REPLY,route ...,topology ...".
    const int flags = line.indexOf(QLatin1Char(','));
    const int text = flags < 0 ? -1 : line.indexOf(QLatin1Char(','), flags + 1);
    QString message = text < 0 ? line : line.mid(text + 1);
    message.remove(QLatin1Char('\n'));
    message.remove(QLatin1Char('\r'));
    return message;
}

void ShowLog::onUpdateLog(const QString& line)
{
    // Inserted as plain text so that OpenVPN's "<...>" and "&" show as written, never as markup.
    QScrollBar* scroll = m_browser->verticalScrollBar();
    const bool atEnd = scroll->value() == scroll->maximum();
    QTextCursor cursor(m_browser->document());
    cursor.movePosition(QTextCursor::End);
    if (!m_browser->document()->isEmpty())
        cursor.insertBlock();
    cursor.insertText(messageOf(line));
    if (atEnd)
        scroll->setValue(scroll->maximum());
}

void ShowLog::clear()
{
    m_browser->clear();
}

void ShowLog::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

void ShowLog::retranslate()
{
    setWindowTitle(tr("Connection Details"));
}
