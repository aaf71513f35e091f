<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="tr">
<context>
    <name>AccountWindow</name>
    <message>
        <location filename="../../ui/AccountWindow.cpp" line="+94"/>
        <source>Account</source>
        <translation>Hesap</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>Çıkış yap</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login VPN:</source>
        <translation>VPN girişi:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change</source>
        <translation>Değiştir</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew on site</source>
        <translation>Sitede yenile</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>Sitede VPN aboneliği satın al</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>Sitede Bitcoin, PayPal, Yandex Money ve diğerleri dahil çeşitli ödeme sistemleriyle ödeme kabul ediyoruz.</translation>
    </message>
    <message>
        <location line="+26"/>
        <source>VPN subscription expires: %1</source>
        <translation>VPN aboneliğinin bitişi: %1</translation>
    </message>
</context>
<context>
    <name>ConnectWindow</name>
    <message>
        <location filename="../../ui/ConnectWindow.cpp" line="+210"/>
        <source>Connected</source>
        <translation>Bağlandı</translation>
    </message>
    <message>
        <location line="-1"/>
        <location line="+4"/>
        <location line="+3"/>
        <source>Show connection</source>
        <translation>Bağlantıyı göster</translation>
    </message>
    <message>
        <location line="-2"/>
        <source>Connecting...</source>
        <translation>Bağlanıyor...</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection...</source>
        <translation>Bağlantı yeniden kuruluyor...</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Select VPN Location</source>
        <translation>VPN konumu seçin</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Not connected</source>
        <translation>Bağlı değil</translation>
    </message>
    <message>
        <location line="+17"/>
        <source>%1 B/s</source>
        <translation>%1 B/sn</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>%1 KB/s</source>
        <translation>%1 KB/sn</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>%1 MB/s</source>
        <translation>%1 MB/sn</translation>
    </message>
    <message>
        <location line="+84"/>
        <source>Error of loading of the config.</source>
        <translation>Yapılandırma yüklenirken hata oluştu.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the certificate.</source>
        <translation>Sertifika yüklenirken hata oluştu.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the key.</source>
        <translation>Anahtar yüklenirken hata oluştu.</translation>
    </message>
    <message>
        <location line="+99"/>
        <source>Timezone changes does not support on your system.</source>
        <translation>Saat dilimi değişikliği sisteminizde desteklenmiyor.</translation>
    </message>
    <message>
        <location line="+257"/>
        <source>Firewall does not support on your system.</source>
        <translation>Güvenlik duvarı sisteminizde desteklenmiyor.</translation>
    </message>
    <message>
        <location line="+63"/>
        <source>Timezone is not changed because of no data.</source>
        <translation>Veri olmadığı için saat dilimi değiştirilmedi.</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>VPN subscription expires: %1</source>
        <translation>VPN aboneliğinin bitişi: %1</translation>
    </message>
    <message>
        <location line="+20"/>
        <source>Name of update file is empty.</source>
        <translation>Güncelleme dosyasının adı boş.</translation>
    </message>
    <message>
        <location filename="../../ui/ConnectWindowForm.cpp" line="+132"/>
        <source>Settings</source>
        <translation>Ayarlar</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Account</source>
        <translation>Hesap</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew subscription</source>
        <translation>Aboneliği yenile</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew it on the site to stay protected.</source>
        <translation>Korunmaya devam etmek için sitede yenileyin.</translation>
    </message>
    <message>
        <source>Disconnect first to change the settings</source>
        <translation>Ayarları değiştirmek için önce bağlantıyı kesin</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected.</source>
        <translation>Bağlı olmadığınız sürece acil durum kesicisi interneti engeller.</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>Değiştir</translation>
    </message>
</context>
<context>
    <name>CustomMessageBox</name>
    <message>
        <location filename="../../ui/CustomMessageBox.cpp" line="+59"/>
        <source>The identity of the Velmora service could not be verified, so nothing was sent to it.</source>
        <translation>Velmora hizmetinin kimliği doğrulanamadı, bu yüzden ona hiçbir şey gönderilmedi.</translation>
    </message>
    <message>
        <location line="+24"/>
        <source>Yes</source>
        <translation>Evet</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No</source>
        <translation>Hayır</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ok</source>
        <translation>Tamam</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>İptal</translation>
    </message>
    <message>
        <source>Open in a browser</source>
        <translation>Tarayıcıda aç</translation>
    </message>
    <message>
        <source>No web browser could be opened. Copy this link into one:</source>
        <translation>Hiçbir web tarayıcısı açılamadı. Bu bağlantıyı bir tarayıcıya kopyalayın:</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected, so this page cannot load now. Connect first, or turn the kill switch off, then open this link:</source>
        <translation>Bağlı olmadığınız sürece acil durum kesicisi interneti engellediği için bu sayfa şu anda yüklenemez. Önce bağlanın ya da acil durum kesicisini kapatın, ardından bu bağlantıyı açın:</translation>
    </message>
</context>
<context>
    <name>FavoriteServerItemDelegate</name>
    <message>
        <location filename="../../ui/FavoriteServerItemDelegate.cpp" line="+41"/>
        <source>Favorite</source>
        <translation>Favoriler</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Recommended</source>
        <translation>Önerilen</translation>
    </message>
</context>
<context>
    <name>LoginWindow</name>
    <message>
        <location filename="../../ui/LoginWindow.cpp" line="+66"/>
        <source>Sign in to your Velmora account</source>
        <translation>Velmora hesabınıza giriş yapın</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Username </source>
        <translation>Kullanıcı adı </translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Password</source>
        <translation>Şifre</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login</source>
        <translation>Giriş yap</translation>
    </message>
    <message>
        <location line="+35"/>
        <source>You must enter username and password to sign in.</source>
        <translation>Giriş yapmak için kullanıcı adı ve parola girmelisiniz.</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <location filename="../../ui/MainWindow.cpp" line="+142"/>
        <source>Failed to install helper for program. Please contact support.</source>
        <translation>Programın yardımcı hizmeti kurulamadı. Lütfen destekle iletişime geçin.</translation>
    </message>
    <message>
        <location line="+128"/>
        <source>Wrong Login/Password.</source>
        <translation>Yanlış kullanıcı adı/parola.</translation>
    </message>
    <message>
        <location line="+29"/>
        <source>Application has no access to Velmora</source>
        <translation>Uygulama Velmora&apos;ya erişemiyor</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Application has no access to network.</source>
        <translation>Uygulamanın ağ erişimi yok.</translation>
    </message>
    <message>
        <location line="+144"/>
        <location line="+28"/>
        <source>VPN connection is active. 
Disconnect and logout?</source>
        <translation>VPN bağlantısı etkin. 
Bağlantı kesilip çıkış yapılsın mı?</translation>
    </message>
    <message>
        <location line="-27"/>
        <source>Do you want to logout?</source>
        <translation>Çıkış yapmak istiyor musunuz?</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+25"/>
        <source>Logout</source>
        <translation>Çıkış</translation>
    </message>
    <message>
        <location line="+187"/>
        <source>Tavrin Update</source>
        <translation>Tavrin güncellemesi</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Available new update. Download it?</source>
        <translation>Yeni bir güncelleme var. İndirilsin mi?</translation>
    </message>
    <message>
        <location line="+49"/>
        <source>Error during downloading update.</source>
        <translation>Güncelleme indirilirken hata oluştu.</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Error during installing update.</source>
        <translation>Güncelleme kurulurken hata oluştu.</translation>
    </message>
    <message>
        <location line="+21"/>
        <source>Your version is outdated. Please, download new Tavrin app on </source>
        <translation>Sürümünüz eski. Lütfen yeni Tavrin uygulamasını şuradan indirin: </translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Exit</source>
        <translation>Çıkış</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>VPN connection is active. Disconnect and exit?</source>
        <translation>VPN bağlantısı etkin. Bağlantı kesilip çıkılsın mı?</translation>
    </message>
    <message>
        <source>Change VPN login</source>
        <translation>VPN girişini değiştir</translation>
    </message>
    <message>
        <source>VPN connection is active. 
Disconnect and change the VPN login?</source>
        <translation>VPN bağlantısı etkin. 
Bağlantı kesilip VPN girişi değiştirilsin mi?</translation>
    </message>
</context>
<context>
    <name>ProgressDlg</name>
    <message>
        <location filename="../../ui/ProgressDlg.cpp" line="+69"/>
        <source>Update</source>
        <translation>Güncelleme</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Downloading update. Please wait...</source>
        <translation>Güncelleme indiriliyor. Lütfen bekleyin...</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>İptal</translation>
    </message>
</context>
<context>
    <name>SearchEdit</name>
    <message>
        <location filename="../../ui/SearchEdit.cpp" line="+14"/>
        <location line="+31"/>
        <source>Location</source>
        <translation>Konum</translation>
    </message>
</context>
<context>
    <name>SelectionAccountWindow</name>
    <message>
        <location filename="../../ui/SelectionAccountWindow.cpp" line="+45"/>
        <source>Select VPN login to connect</source>
        <translation>Bağlanmak için VPN girişini seçin</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Continue</source>
        <translation>Devam</translation>
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
        <translation>Gecikme bilinmiyor: henüz ölçülmedi ya da sunucu yanıt vermedi</translation>
    </message>
</context>
<context>
    <name>ServerListWindow</name>
    <message>
        <location filename="../../ui/ServerListWindow.cpp" line="+149"/>
        <source>Locations</source>
        <translation>Konumlar</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Favorites</source>
        <translation>Favoriler</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Standard VPN</source>
        <translation>Standart VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Double VPN</source>
        <translation>Çift VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Search</source>
        <translation>Ara</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No locations found</source>
        <translation>Konum bulunamadı</translation>
    </message>
</context>
<context>
    <name>SettingsWindow</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="+176"/>
        <source>Settings</source>
        <translation>Ayarlar</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Language:</source>
        <translation>Dil:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Choose VPN protocol:</source>
        <translation>VPN protokolünü seçin:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Launch on startup</source>
        <translation>Başlangıçta çalıştır</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Connect to VPN when app is started</source>
        <translation>Açılışta VPN&apos;e bağlan</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change timezone using IP address</source>
        <translation>Saat dilimi IP&apos;ye göre</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>After connection to VPN server</source>
        <translation>VPN sunucusuna bağlandıktan sonra</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Kill switch</source>
        <translation>Acil durum kesicisi</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>IPv4, IPv6, DNS4, DNS6 leaks protection</source>
        <translation>IPv4, IPv6, DNS4, DNS6 sızıntı koruması</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Allow access to local devices</source>
        <translation>Yerel cihazlara erişim</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Printers, routers, etc</source>
        <translation>Yazıcılar, yönlendiriciler vb.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Version:</source>
        <translation>Sürüm:</translation>
    </message>
</context>
<context>
    <name>ShowLog</name>
    <message>
        <location filename="../../ui/ShowLog.cpp" line="+71"/>
        <source>Connection Details</source>
        <translation>Bağlantı Ayrıntıları</translation>
    </message>
</context>
<context>
    <name>SubscriptionPurchaseWindow</name>
    <message>
        <location filename="../../ui/SubscriptionPurchaseWindow.cpp" line="+70"/>
        <source>Account</source>
        <translation>Hesap</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>Çıkış yap</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Your account has no active VPN subscription.</source>
        <translation>Hesabınızda etkin bir VPN aboneliği yok.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>Sitede VPN aboneliği satın al</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>Sitede Bitcoin, PayPal, Yandex Money ve diğerleri dahil çeşitli ödeme sistemleriyle ödeme kabul ediyoruz.</translation>
    </message>
</context>
<context>
    <name>SystemTray</name>
    <message>
        <location filename="../../ui/SystemTray.cpp" line="+28"/>
        <source>Connect</source>
        <translation>Bağlan</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+84"/>
        <source>Reconnect</source>
        <translation>Yeniden bağlan</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Disconnect</source>
        <translation>Bağlantıyı kes</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Quit</source>
        <translation>Çıkış</translation>
    </message>
    <message>
        <location line="-46"/>
        <source>Your connection is not secured now!</source>
        <translation>Bağlantınız şu anda güvenli değil!</translation>
    </message>
    <message>
        <location line="+32"/>
        <source>Your connection is encrypted and secured now!</source>
        <translation>Bağlantınız artık şifreli ve güvenli!</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>Connecting to %1</source>
        <translation>%1 sunucusuna bağlanılıyor</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connected to %1</source>
        <translation>%1 sunucusuna bağlandı</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection to %1</source>
        <translation>%1 bağlantısı yeniden kuruluyor</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connect %1</source>
        <translation>%1 sunucusuna bağlan</translation>
    </message>
    <message>
        <source>Tavrin: Internet blocked by the kill switch</source>
        <translation>Tavrin: İnternet acil durum kesicisi tarafından engellendi</translation>
    </message>
</context>
<context>
    <name>VpnProtocol</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="-134"/>
        <source>OpenVPN TCP (safer)</source>
        <translation>OpenVPN TCP (daha güvenli)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>OpenVPN UDP (faster)</source>
        <translation>OpenVPN UDP (daha hızlı)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Imitation HTTPS</source>
        <translation>HTTPS taklidi</translation>
    </message>
</context>
</TS>
