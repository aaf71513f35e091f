#pragma once

#include <QWidget>

class QTextBrowser;

// The "Connection Details" window: the OpenVPN log of the current connection, one line a paragraph.
class ShowLog : public QWidget
{
    Q_OBJECT

public:
    explicit ShowLog(QWidget* parent = nullptr);

    QString plainText() const;

    // The message part of a management-interface log line ("time,flags,message").
    static QString messageOf(const QString& line);

public slots:
    void onUpdateLog(const QString& line);
    void clear();

protected:
    void changeEvent(QEvent* event) override;

private:
    void retranslate();

    QTextBrowser* m_browser;
};
