<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru">
<context>
    <name>AccountWindow</name>
    <message>
        <location filename="../../ui/AccountWindow.cpp" line="+94"/>
        <source>Account</source>
        <translation>Аккаунт</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>Выйти</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login VPN:</source>
        <translation>Логин VPN:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change</source>
        <translation>Сменить</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew on site</source>
        <translation>Продлить на сайте</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>Купить подписку VPN на сайте</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>На сайте мы принимаем оплату через разные платёжные системы, включая Bitcoin, PayPal, Yandex Money и другие.</translation>
    </message>
    <message>
        <location line="+26"/>
        <source>VPN subscription expires: %1</source>
        <translation>Подписка VPN действует до: %1</translation>
    </message>
</context>
<context>
    <name>ConnectWindow</name>
    <message>
        <location filename="../../ui/ConnectWindow.cpp" line="+210"/>
        <source>Connected</source>
        <translation>Подключено</translation>
    </message>
    <message>
        <location line="-1"/>
        <location line="+4"/>
        <location line="+3"/>
        <source>Show connection</source>
        <translation>Показать подключение</translation>
    </message>
    <message>
        <location line="-2"/>
        <source>Connecting...</source>
        <translation>Подключение...</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection...</source>
        <translation>Восстановление подключения...</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Select VPN Location</source>
        <translation>Выберите локацию VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Not connected</source>
        <translation>Не подключено</translation>
    </message>
    <message>
        <location line="+17"/>
        <source>%1 B/s</source>
        <translation>%1 Б/с</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>%1 KB/s</source>
        <translation>%1 КБ/с</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>%1 MB/s</source>
        <translation>%1 МБ/с</translation>
    </message>
    <message>
        <location line="+84"/>
        <source>Error of loading of the config.</source>
        <translation>Ошибка загрузки конфигурации.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the certificate.</source>
        <translation>Ошибка загрузки сертификата.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the key.</source>
        <translation>Ошибка загрузки ключа.</translation>
    </message>
    <message>
        <location line="+99"/>
        <source>Timezone changes does not support on your system.</source>
        <translation>Смена часового пояса не поддерживается в вашей системе.</translation>
    </message>
    <message>
        <location line="+257"/>
        <source>Firewall does not support on your system.</source>
        <translation>Брандмауэр не поддерживается в вашей системе.</translation>
    </message>
    <message>
        <location line="+63"/>
        <source>Timezone is not changed because of no data.</source>
        <translation>Часовой пояс не изменён: нет данных.</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>VPN subscription expires: %1</source>
        <translation>Подписка VPN истекает: %1</translation>
    </message>
    <message>
        <location line="+20"/>
        <source>Name of update file is empty.</source>
        <translation>Имя файла обновления пустое.</translation>
    </message>
    <message>
        <location filename="../../ui/ConnectWindowForm.cpp" line="+132"/>
        <source>Settings</source>
        <translation>Настройки</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Account</source>
        <translation>Аккаунт</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew subscription</source>
        <translation>Продлить подписку</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew it on the site to stay protected.</source>
        <translation>Продлите её на сайте, чтобы оставаться под защитой.</translation>
    </message>
    <message>
        <source>Disconnect first to change the settings</source>
        <translation>Сначала отключитесь, чтобы изменить настройки</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected.</source>
        <translation>Пока вы не подключены, аварийный выключатель блокирует интернет.</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>Изменить</translation>
    </message>
</context>
<context>
    <name>CustomMessageBox</name>
    <message>
        <location filename="../../ui/CustomMessageBox.cpp" line="+59"/>
        <source>The identity of the Velmora service could not be verified, so nothing was sent to it.</source>
        <translation>Не удалось подтвердить подлинность сервиса Velmora, поэтому ему ничего не отправлено.</translation>
    </message>
    <message>
        <location line="+24"/>
        <source>Yes</source>
        <translation>Да</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No</source>
        <translation>Нет</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ok</source>
        <translation>ОК</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>Отмена</translation>
    </message>
    <message>
        <source>Open in a browser</source>
        <translation>Открыть в браузере</translation>
    </message>
    <message>
        <source>No web browser could be opened. Copy this link into one:</source>
        <translation>Не удалось открыть веб-браузер. Скопируйте эту ссылку в браузер:</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected, so this page cannot load now. Connect first, or turn the kill switch off, then open this link:</source>
        <translation>Пока вы не подключены, аварийный выключатель блокирует интернет, поэтому сейчас эта страница не загрузится. Сначала подключитесь или отключите аварийный выключатель, затем откройте эту ссылку:</translation>
    </message>
</context>
<context>
    <name>FavoriteServerItemDelegate</name>
    <message>
        <location filename="../../ui/FavoriteServerItemDelegate.cpp" line="+41"/>
        <source>Favorite</source>
        <translation>Избранное</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Recommended</source>
        <translation>Рекомендуемые</translation>
    </message>
</context>
<context>
    <name>LoginWindow</name>
    <message>
        <location filename="../../ui/LoginWindow.cpp" line="+66"/>
        <source>Sign in to your Velmora account</source>
        <translation>Войдите в аккаунт Velmora</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Username </source>
        <translation>Имя пользователя </translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Password</source>
        <translation>Пароль</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login</source>
        <translation>Войти</translation>
    </message>
    <message>
        <location line="+35"/>
        <source>You must enter username and password to sign in.</source>
        <translation>Для входа введите имя пользователя и пароль.</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <location filename="../../ui/MainWindow.cpp" line="+142"/>
        <source>Failed to install helper for program. Please contact support.</source>
        <translation>Не удалось установить вспомогательную службу программы. Обратитесь в поддержку.</translation>
    </message>
    <message>
        <location line="+128"/>
        <source>Wrong Login/Password.</source>
        <translation>Неверный логин или пароль.</translation>
    </message>
    <message>
        <location line="+29"/>
        <source>Application has no access to Velmora</source>
        <translation>У приложения нет доступа к Velmora</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Application has no access to network.</source>
        <translation>У приложения нет доступа к сети.</translation>
    </message>
    <message>
        <location line="+144"/>
        <location line="+28"/>
        <source>VPN connection is active. 
Disconnect and logout?</source>
        <translation>VPN-подключение активно. 
Отключиться и выйти?</translation>
    </message>
    <message>
        <location line="-27"/>
        <source>Do you want to logout?</source>
        <translation>Выйти из аккаунта?</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+25"/>
        <source>Logout</source>
        <translation>Выход</translation>
    </message>
    <message>
        <location line="+187"/>
        <source>Tavrin Update</source>
        <translation>Обновление Tavrin</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Available new update. Download it?</source>
        <translation>Доступно новое обновление. Скачать?</translation>
    </message>
    <message>
        <location line="+49"/>
        <source>Error during downloading update.</source>
        <translation>Ошибка при загрузке обновления.</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Error during installing update.</source>
        <translation>Ошибка при установке обновления.</translation>
    </message>
    <message>
        <location line="+21"/>
        <source>Your version is outdated. Please, download new Tavrin app on </source>
        <translation>Ваша версия устарела. Скачайте новое приложение Tavrin на </translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Exit</source>
        <translation>Выход</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>VPN connection is active. Disconnect and exit?</source>
        <translation>VPN-подключение активно. Отключиться и выйти?</translation>
    </message>
    <message>
        <source>Change VPN login</source>
        <translation>Смена логина VPN</translation>
    </message>
    <message>
        <source>VPN connection is active. 
Disconnect and change the VPN login?</source>
        <translation>VPN-подключение активно. 
Отключиться и сменить логин VPN?</translation>
    </message>
</context>
<context>
    <name>ProgressDlg</name>
    <message>
        <location filename="../../ui/ProgressDlg.cpp" line="+69"/>
        <source>Update</source>
        <translation>Обновление</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Downloading update. Please wait...</source>
        <translation>Загрузка обновления. Пожалуйста, подождите...</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>Отмена</translation>
    </message>
</context>
<context>
    <name>SearchEdit</name>
    <message>
        <location filename="../../ui/SearchEdit.cpp" line="+14"/>
        <location line="+31"/>
        <source>Location</source>
        <translation>Местоположение</translation>
    </message>
</context>
<context>
    <name>SelectionAccountWindow</name>
    <message>
        <location filename="../../ui/SelectionAccountWindow.cpp" line="+45"/>
        <source>Select VPN login to connect</source>
        <translation>Выберите VPN-логин для подключения</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Continue</source>
        <translation>Продолжить</translation>
    </message>
</context>
<context>
    <name>ServerItemDelegate</name>
    <message>
        <location filename="../../ui/ServerItemDelegate.cpp" line="+41"/>
        <source>%1 ms</source>
        <translation>%1 мс</translation>
    </message>
    <message>
        <location line="+19"/>
        <source>Latency unknown: not measured yet, or the server did not answer</source>
        <translation>Задержка неизвестна: ещё не измерена или сервер не ответил</translation>
    </message>
</context>
<context>
    <name>ServerListWindow</name>
    <message>
        <location filename="../../ui/ServerListWindow.cpp" line="+149"/>
        <source>Locations</source>
        <translation>Локации</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Favorites</source>
        <translation>Избранное</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Standard VPN</source>
        <translation>Обычный VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Double VPN</source>
        <translation>Двойной VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Search</source>
        <translation>Поиск</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No locations found</source>
        <translation>Локации не найдены</translation>
    </message>
</context>
<context>
    <name>SettingsWindow</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="+176"/>
        <source>Settings</source>
        <translation>Настройки</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Language:</source>
        <translation>Язык:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Choose VPN protocol:</source>
        <translation>Выберите протокол VPN:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Launch on startup</source>
        <translation>Запускать вместе с системой</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Connect to VPN when app is started</source>
        <translation>Подключать VPN при запуске</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change timezone using IP address</source>
        <translation>Часовой пояс по IP-адресу</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>After connection to VPN server</source>
        <translation>После подключения к VPN-серверу</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Kill switch</source>
        <translation>Аварийный выключатель</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>IPv4, IPv6, DNS4, DNS6 leaks protection</source>
        <translation>Защита от утечек IPv4, IPv6, DNS4, DNS6</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Allow access to local devices</source>
        <translation>Доступ к локальным устройствам</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Printers, routers, etc</source>
        <translation>Принтеры, роутеры и т. п.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Version:</source>
        <translation>Версия:</translation>
    </message>
</context>
<context>
    <name>ShowLog</name>
    <message>
        <location filename="../../ui/ShowLog.cpp" line="+71"/>
        <source>Connection Details</source>
        <translation>Подробности соединения</translation>
    </message>
</context>
<context>
    <name>SubscriptionPurchaseWindow</name>
    <message>
        <location filename="../../ui/SubscriptionPurchaseWindow.cpp" line="+70"/>
        <source>Account</source>
        <translation>Аккаунт</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>Выйти</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Your account has no active VPN subscription.</source>
        <translation>В вашем аккаунте нет активной подписки VPN.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>Купить подписку VPN на сайте</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>На сайте мы принимаем оплату через разные платёжные системы, включая Bitcoin, PayPal, Yandex Money и другие.</translation>
    </message>
</context>
<context>
    <name>SystemTray</name>
    <message>
        <location filename="../../ui/SystemTray.cpp" line="+28"/>
        <source>Connect</source>
        <translation>Подключиться</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+84"/>
        <source>Reconnect</source>
        <translation>Переподключиться</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Disconnect</source>
        <translation>Отключиться</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Quit</source>
        <translation>Выход</translation>
    </message>
    <message>
        <location line="-46"/>
        <source>Your connection is not secured now!</source>
        <translation>Ваше соединение сейчас не защищено!</translation>
    </message>
    <message>
        <location line="+32"/>
        <source>Your connection is encrypted and secured now!</source>
        <translation>Ваше соединение теперь зашифровано и защищено!</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>Connecting to %1</source>
        <translation>Подключение к %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connected to %1</source>
        <translation>Подключено к %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection to %1</source>
        <translation>Восстановление подключения к %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connect %1</source>
        <translation>Подключиться к %1</translation>
    </message>
    <message>
        <source>Tavrin: Internet blocked by the kill switch</source>
        <translation>Tavrin: интернет заблокирован аварийным выключателем</translation>
    </message>
</context>
<context>
    <name>VpnProtocol</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="-134"/>
        <source>OpenVPN TCP (safer)</source>
        <translation>OpenVPN TCP (надёжнее)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>OpenVPN UDP (faster)</source>
        <translation>OpenVPN UDP (быстрее)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Imitation HTTPS</source>
        <translation>Имитация HTTPS</translation>
    </message>
</context>
</TS>
