#pragma once

#include <QString>
#include <QThread>

// Fetches a small text (an OpenVPN configuration given by URL) on its own thread. The caller waits for
// finished() and then reads `success` and `data`.
class DownloadConfig : public QThread
{
    Q_OBJECT

public:
    DownloadConfig(QString link, QObject* parent);

    bool success = false;
    QString data;
    QString url;

protected:
    void run() override;
};
