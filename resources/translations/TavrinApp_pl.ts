<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="pl">
<context>
    <name>AccountWindow</name>
    <message>
        <location filename="../../ui/AccountWindow.cpp" line="+94"/>
        <source>Account</source>
        <translation>Konto</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>Wyloguj</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login VPN:</source>
        <translation>Login VPN:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change</source>
        <translation>Zmień</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew on site</source>
        <translation>Przedłuż na stronie</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>Kup subskrypcję VPN na stronie</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>Na stronie przyjmujemy płatności przez różne systemy płatności, w tym Bitcoin, PayPal, Yandex Money i inne.</translation>
    </message>
    <message>
        <location line="+26"/>
        <source>VPN subscription expires: %1</source>
        <translation>Subskrypcja VPN wygasa: %1</translation>
    </message>
</context>
<context>
    <name>ConnectWindow</name>
    <message>
        <location filename="../../ui/ConnectWindow.cpp" line="+210"/>
        <source>Connected</source>
        <translation>Połączono</translation>
    </message>
    <message>
        <location line="-1"/>
        <location line="+4"/>
        <location line="+3"/>
        <source>Show connection</source>
        <translation>Pokaż połączenie</translation>
    </message>
    <message>
        <location line="-2"/>
        <source>Connecting...</source>
        <translation>Łączenie...</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection...</source>
        <translation>Przywracanie połączenia...</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Select VPN Location</source>
        <translation>Wybierz lokalizację VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Not connected</source>
        <translation>Nie połączono</translation>
    </message>
    <message>
        <location line="+17"/>
        <source>%1 B/s</source>
        <translation>%1 B/s</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>%1 KB/s</source>
        <translation>%1 KB/s</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>%1 MB/s</source>
        <translation>%1 MB/s</translation>
    </message>
    <message>
        <location line="+84"/>
        <source>Error of loading of the config.</source>
        <translation>Błąd wczytywania konfiguracji.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the certificate.</source>
        <translation>Błąd wczytywania certyfikatu.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the key.</source>
        <translation>Błąd wczytywania klucza.</translation>
    </message>
    <message>
        <location line="+99"/>
        <source>Timezone changes does not support on your system.</source>
        <translation>Zmiana strefy czasowej nie jest obsługiwana w Twoim systemie.</translation>
    </message>
    <message>
        <location line="+257"/>
        <source>Firewall does not support on your system.</source>
        <translation>Zapora nie jest obsługiwana w Twoim systemie.</translation>
    </message>
    <message>
        <location line="+63"/>
        <source>Timezone is not changed because of no data.</source>
        <translation>Strefa czasowa nie została zmieniona z powodu braku danych.</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>VPN subscription expires: %1</source>
        <translation>Subskrypcja VPN wygasa: %1</translation>
    </message>
    <message>
        <location line="+20"/>
        <source>Name of update file is empty.</source>
        <translation>Nazwa pliku aktualizacji jest pusta.</translation>
    </message>
    <message>
        <location filename="../../ui/ConnectWindowForm.cpp" line="+132"/>
        <source>Settings</source>
        <translation>Ustawienia</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Account</source>
        <translation>Konto</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew subscription</source>
        <translation>Odnów subskrypcję</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew it on the site to stay protected.</source>
        <translation>Odnów ją na stronie, aby pozostać chronionym.</translation>
    </message>
    <message>
        <source>Disconnect first to change the settings</source>
        <translation>Najpierw rozłącz, aby zmienić ustawienia</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected.</source>
        <translation>Wyłącznik awaryjny blokuje internet, dopóki nie masz połączenia.</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>Zmień</translation>
    </message>
</context>
<context>
    <name>CustomMessageBox</name>
    <message>
        <location filename="../../ui/CustomMessageBox.cpp" line="+59"/>
        <source>The identity of the Velmora service could not be verified, so nothing was sent to it.</source>
        <translation>Nie udało się zweryfikować tożsamości usługi Velmora, więc nic do niej nie wysłano.</translation>
    </message>
    <message>
        <location line="+24"/>
        <source>Yes</source>
        <translation>Tak</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No</source>
        <translation>Nie</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ok</source>
        <translation>OK</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>Anuluj</translation>
    </message>
    <message>
        <source>Open in a browser</source>
        <translation>Otwórz w przeglądarce</translation>
    </message>
    <message>
        <source>No web browser could be opened. Copy this link into one:</source>
        <translation>Nie udało się otworzyć przeglądarki internetowej. Skopiuj ten link do przeglądarki:</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected, so this page cannot load now. Connect first, or turn the kill switch off, then open this link:</source>
        <translation>Wyłącznik awaryjny blokuje internet, dopóki nie masz połączenia, więc ta strona nie może się teraz wczytać. Najpierw połącz się albo wyłącz wyłącznik awaryjny, a potem otwórz ten link:</translation>
    </message>
</context>
<context>
    <name>FavoriteServerItemDelegate</name>
    <message>
        <location filename="../../ui/FavoriteServerItemDelegate.cpp" line="+41"/>
        <source>Favorite</source>
        <translation>Ulubione</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Recommended</source>
        <translation>Polecane</translation>
    </message>
</context>
<context>
    <name>LoginWindow</name>
    <message>
        <location filename="../../ui/LoginWindow.cpp" line="+66"/>
        <source>Sign in to your Velmora account</source>
        <translation>Zaloguj się do konta Velmora</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Username </source>
        <translation>Nazwa użytkownika </translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Password</source>
        <translation>Hasło</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login</source>
        <translation>Zaloguj</translation>
    </message>
    <message>
        <location line="+35"/>
        <source>You must enter username and password to sign in.</source>
        <translation>Aby się zalogować, podaj nazwę użytkownika i hasło.</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <location filename="../../ui/MainWindow.cpp" line="+142"/>
        <source>Failed to install helper for program. Please contact support.</source>
        <translation>Nie udało się zainstalować usługi pomocniczej programu. Skontaktuj się z pomocą techniczną.</translation>
    </message>
    <message>
        <location line="+128"/>
        <source>Wrong Login/Password.</source>
        <translation>Nieprawidłowy login lub hasło.</translation>
    </message>
    <message>
        <location line="+29"/>
        <source>Application has no access to Velmora</source>
        <translation>Aplikacja nie ma dostępu do Velmora</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Application has no access to network.</source>
        <translation>Aplikacja nie ma dostępu do sieci.</translation>
    </message>
    <message>
        <location line="+144"/>
        <location line="+28"/>
        <source>VPN connection is active. 
Disconnect and logout?</source>
        <translation>Połączenie VPN jest aktywne. 
Rozłączyć i wylogować?</translation>
    </message>
    <message>
        <location line="-27"/>
        <source>Do you want to logout?</source>
        <translation>Czy chcesz się wylogować?</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+25"/>
        <source>Logout</source>
        <translation>Wyloguj</translation>
    </message>
    <message>
        <location line="+187"/>
        <source>Tavrin Update</source>
        <translation>Aktualizacja Tavrin</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Available new update. Download it?</source>
        <translation>Dostępna jest nowa aktualizacja. Pobrać ją?</translation>
    </message>
    <message>
        <location line="+49"/>
        <source>Error during downloading update.</source>
        <translation>Błąd podczas pobierania aktualizacji.</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Error during installing update.</source>
        <translation>Błąd podczas instalowania aktualizacji.</translation>
    </message>
    <message>
        <location line="+21"/>
        <source>Your version is outdated. Please, download new Tavrin app on </source>
        <translation>Twoja wersja jest nieaktualna. Pobierz nową aplikację Tavrin ze strony </translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Exit</source>
        <translation>Zakończ</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>VPN connection is active. Disconnect and exit?</source>
        <translation>Połączenie VPN jest aktywne. Rozłączyć i zakończyć?</translation>
    </message>
    <message>
        <source>Change VPN login</source>
        <translation>Zmień login VPN</translation>
    </message>
    <message>
        <source>VPN connection is active. 
Disconnect and change the VPN login?</source>
        <translation>Połączenie VPN jest aktywne. 
Rozłączyć i zmienić login VPN?</translation>
    </message>
</context>
<context>
    <name>ProgressDlg</name>
    <message>
        <location filename="../../ui/ProgressDlg.cpp" line="+69"/>
        <source>Update</source>
        <translation>Aktualizacja</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Downloading update. Please wait...</source>
        <translation>Pobieranie aktualizacji. Proszę czekać...</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>Anuluj</translation>
    </message>
</context>
<context>
    <name>SearchEdit</name>
    <message>
        <location filename="../../ui/SearchEdit.cpp" line="+14"/>
        <location line="+31"/>
        <source>Location</source>
        <translation>Lokalizacja</translation>
    </message>
</context>
<context>
    <name>SelectionAccountWindow</name>
    <message>
        <location filename="../../ui/SelectionAccountWindow.cpp" line="+45"/>
        <source>Select VPN login to connect</source>
        <translation>Wybierz login VPN do połączenia</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Continue</source>
        <translation>Dalej</translation>
    </message>
</context>
<context>
    <name>ServerItemDelegate</name>
    <message>
        <location filename="../../ui/ServerItemDelegate.cpp" line="+41"/>
        <source>%1 ms</source>
        <translation>%1 ms</translation>
    </message>
    <message>
        <location line="+19"/>
        <source>Latency unknown: not measured yet, or the server did not answer</source>
        <translation>Opóźnienie nieznane: jeszcze nie zmierzone lub serwer nie odpowiedział</translation>
    </message>
</context>
<context>
    <name>ServerListWindow</name>
    <message>
        <location filename="../../ui/ServerListWindow.cpp" line="+149"/>
        <source>Locations</source>
        <translation>Lokalizacje</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Favorites</source>
        <translation>Ulubione</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Standard VPN</source>
        <translation>Zwykły VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Double VPN</source>
        <translation>Podwójny VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Search</source>
        <translation>Szukaj</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No locations found</source>
        <translation>Nie znaleziono lokalizacji</translation>
    </message>
</context>
<context>
    <name>SettingsWindow</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="+176"/>
        <source>Settings</source>
        <translation>Ustawienia</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Language:</source>
        <translation>Język:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Choose VPN protocol:</source>
        <translation>Wybierz protokół VPN:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Launch on startup</source>
        <translation>Uruchamiaj przy starcie systemu</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Connect to VPN when app is started</source>
        <translation>Łącz z VPN po uruchomieniu</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change timezone using IP address</source>
        <translation>Strefa czasowa według IP</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>After connection to VPN server</source>
        <translation>Po połączeniu z serwerem VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Kill switch</source>
        <translation>Wyłącznik awaryjny</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>IPv4, IPv6, DNS4, DNS6 leaks protection</source>
        <translation>Ochrona przed wyciekami IPv4, IPv6, DNS4, DNS6</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Allow access to local devices</source>
        <translation>Dostęp do urządzeń lokalnych</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Printers, routers, etc</source>
        <translation>Drukarki, routery itp.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Version:</source>
        <translation>Wersja:</translation>
    </message>
</context>
<context>
    <name>ShowLog</name>
    <message>
        <location filename="../../ui/ShowLog.cpp" line="+71"/>
        <source>Connection Details</source>
        <translation>Szczegóły połączenia</translation>
    </message>
</context>
<context>
    <name>SubscriptionPurchaseWindow</name>
    <message>
        <location filename="../../ui/SubscriptionPurchaseWindow.cpp" line="+70"/>
        <source>Account</source>
        <translation>Konto</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>Wyloguj</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Your account has no active VPN subscription.</source>
        <translation>Twoje konto nie ma aktywnej subskrypcji VPN.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>Kup subskrypcję VPN na stronie</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>Na stronie przyjmujemy płatności przez różne systemy płatności, w tym Bitcoin, PayPal, Yandex Money i inne.</translation>
    </message>
</context>
<context>
    <name>SystemTray</name>
    <message>
        <location filename="../../ui/SystemTray.cpp" line="+28"/>
        <source>Connect</source>
        <translation>Połącz</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+84"/>
        <source>Reconnect</source>
        <translation>Połącz ponownie</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Disconnect</source>
        <translation>Rozłącz</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Quit</source>
        <translation>Zakończ</translation>
    </message>
    <message>
        <location line="-46"/>
        <source>Your connection is not secured now!</source>
        <translation>Twoje połączenie nie jest teraz chronione!</translation>
    </message>
    <message>
        <location line="+32"/>
        <source>Your connection is encrypted and secured now!</source>
        <translation>Twoje połączenie jest teraz szyfrowane i chronione!</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>Connecting to %1</source>
        <translation>Łączenie z %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connected to %1</source>
        <translation>Połączono z %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection to %1</source>
        <translation>Przywracanie połączenia z %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connect %1</source>
        <translation>Połącz z %1</translation>
    </message>
    <message>
        <source>Tavrin: Internet blocked by the kill switch</source>
        <translation>Tavrin: internet zablokowany przez wyłącznik awaryjny</translation>
    </message>
</context>
<context>
    <name>VpnProtocol</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="-134"/>
        <source>OpenVPN TCP (safer)</source>
        <translation>OpenVPN TCP (bezpieczniejszy)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>OpenVPN UDP (faster)</source>
        <translation>OpenVPN UDP (szybszy)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Imitation HTTPS</source>
        <translation>Imitacja HTTPS</translation>
    </message>
</context>
</TS>
