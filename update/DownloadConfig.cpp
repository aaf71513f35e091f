#include "DownloadConfig.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QScopedPointer>

DownloadConfig::DownloadConfig(QString link, QObject* parent)
    : QThread(parent)
    , url(link)
{ }

void DownloadConfig::run()
{
    QNetworkAccessManager manager;
    QEventLoop loop;
    connect(&manager, &QNetworkAccessManager::finished, &loop, &QEventLoop::quit);
    QScopedPointer<QNetworkReply> reply(manager.get(QNetworkRequest(QUrl(url))));
    loop.exec();
    if (reply->error() != QNetworkReply::NoError) {
        success = false;
        return;
    }
    success = true;
    data = QString::fromUtf8(reply->readAll());
}
