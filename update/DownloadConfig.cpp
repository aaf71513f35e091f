#include "DownloadConfig.h"

#include <QDebug>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QScopedPointer>

#include "ServiceAddresses.h"
#include "ServiceTls.h"

DownloadConfig::DownloadConfig(QString link, QObject* parent)
    : QThread(parent)
    , url(link)
{ }

void DownloadConfig::run()
{
    QNetworkAccessManager manager;
    QEventLoop loop;
    connect(&manager, &QNetworkAccessManager::finished, &loop, &QEventLoop::quit);
    connect(&manager, &QNetworkAccessManager::sslErrors, [](QNetworkReply* failed, const QList<QSslError>& errors) {
        qWarning().noquote() << QStringLiteral("The certificate of %1 did not verify: %2")
                                    .arg(failed->url().host(), ServiceTls::describe(errors));
    });
    QScopedPointer<QNetworkReply> reply(manager.get(ServiceAddresses::request(QUrl(url))));
    loop.exec();
    if (reply->error() != QNetworkReply::NoError) {
        success = false;
        return;
    }
    success = true;
    data = QString::fromUtf8(reply->readAll());
}
