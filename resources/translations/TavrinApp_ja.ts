<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja">
<context>
    <name>AccountWindow</name>
    <message>
        <location filename="../../ui/AccountWindow.cpp" line="+94"/>
        <source>Account</source>
        <translation>アカウント</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>ログアウト</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login VPN:</source>
        <translation>VPN ログイン:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change</source>
        <translation>変更</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew on site</source>
        <translation>サイトで更新</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>サイトでVPNサブスクリプションを購入</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>サイトでは Bitcoin、PayPal、Yandex Money などさまざまな決済方法でお支払いいただけます。</translation>
    </message>
    <message>
        <location line="+26"/>
        <source>VPN subscription expires: %1</source>
        <translation>VPNサブスクリプションの有効期限: %1</translation>
    </message>
</context>
<context>
    <name>ConnectWindow</name>
    <message>
        <location filename="../../ui/ConnectWindow.cpp" line="+210"/>
        <source>Connected</source>
        <translation>接続済み</translation>
    </message>
    <message>
        <location line="-1"/>
        <location line="+4"/>
        <location line="+3"/>
        <source>Show connection</source>
        <translation>接続を表示</translation>
    </message>
    <message>
        <location line="-2"/>
        <source>Connecting...</source>
        <translation>接続中...</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection...</source>
        <translation>接続を再確立しています...</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Select VPN Location</source>
        <translation>VPN の場所を選択</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Not connected</source>
        <translation>未接続</translation>
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
        <translation>設定の読み込みエラー。</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the certificate.</source>
        <translation>証明書の読み込みエラー。</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the key.</source>
        <translation>鍵の読み込みエラー。</translation>
    </message>
    <message>
        <location line="+99"/>
        <source>Timezone changes does not support on your system.</source>
        <translation>お使いのシステムはタイムゾーンの変更に対応していません。</translation>
    </message>
    <message>
        <location line="+257"/>
        <source>Firewall does not support on your system.</source>
        <translation>お使いのシステムはファイアウォールに対応していません。</translation>
    </message>
    <message>
        <location line="+63"/>
        <source>Timezone is not changed because of no data.</source>
        <translation>データがないため、タイムゾーンは変更されていません。</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>VPN subscription expires: %1</source>
        <translation>VPN サブスクリプションの期限: %1</translation>
    </message>
    <message>
        <location line="+20"/>
        <source>Name of update file is empty.</source>
        <translation>更新ファイルの名前が空です。</translation>
    </message>
    <message>
        <location filename="../../ui/ConnectWindowForm.cpp" line="+132"/>
        <source>Settings</source>
        <translation>設定</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Account</source>
        <translation>アカウント</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew subscription</source>
        <translation>サブスクリプションを更新</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew it on the site to stay protected.</source>
        <translation>保護を続けるにはサイトで更新してください。</translation>
    </message>
    <message>
        <source>Disconnect first to change the settings</source>
        <translation>設定を変更するには、先に切断してください</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected.</source>
        <translation>接続していない間は、キルスイッチがインターネットを遮断します。</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>変更</translation>
    </message>
</context>
<context>
    <name>CustomMessageBox</name>
    <message>
        <location filename="../../ui/CustomMessageBox.cpp" line="+59"/>
        <source>The identity of the Velmora service could not be verified, so nothing was sent to it.</source>
        <translation>Velmora サービスの身元を確認できなかったため、何も送信されませんでした。</translation>
    </message>
    <message>
        <location line="+24"/>
        <source>Yes</source>
        <translation>はい</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No</source>
        <translation>いいえ</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ok</source>
        <translation>OK</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>キャンセル</translation>
    </message>
    <message>
        <source>Open in a browser</source>
        <translation>ブラウザーで開く</translation>
    </message>
    <message>
        <source>No web browser could be opened. Copy this link into one:</source>
        <translation>Web ブラウザーを開けませんでした。このリンクをブラウザーにコピーしてください:</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected, so this page cannot load now. Connect first, or turn the kill switch off, then open this link:</source>
        <translation>接続していない間はキルスイッチがインターネットを遮断しているため、このページは今は読み込めません。先に接続するか、キルスイッチをオフにしてから、このリンクを開いてください：</translation>
    </message>
</context>
<context>
    <name>FavoriteServerItemDelegate</name>
    <message>
        <location filename="../../ui/FavoriteServerItemDelegate.cpp" line="+41"/>
        <source>Favorite</source>
        <translation>お気に入り</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Recommended</source>
        <translation>おすすめ</translation>
    </message>
</context>
<context>
    <name>LoginWindow</name>
    <message>
        <location filename="../../ui/LoginWindow.cpp" line="+66"/>
        <source>Sign in to your Velmora account</source>
        <translation>Velmoraアカウントにサインイン</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Username </source>
        <translation>ユーザー名 </translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Password</source>
        <translation>パスワード</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login</source>
        <translation>ログイン</translation>
    </message>
    <message>
        <location line="+35"/>
        <source>You must enter username and password to sign in.</source>
        <translation>サインインするにはユーザー名とパスワードを入力してください。</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <location filename="../../ui/MainWindow.cpp" line="+142"/>
        <source>Failed to install helper for program. Please contact support.</source>
        <translation>プログラムのヘルパーをインストールできませんでした。サポートにお問い合わせください。</translation>
    </message>
    <message>
        <location line="+128"/>
        <source>Wrong Login/Password.</source>
        <translation>ログインまたはパスワードが正しくありません。</translation>
    </message>
    <message>
        <location line="+29"/>
        <source>Application has no access to Velmora</source>
        <translation>アプリケーションが Velmora にアクセスできません</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Application has no access to network.</source>
        <translation>アプリケーションがネットワークにアクセスできません。</translation>
    </message>
    <message>
        <location line="+144"/>
        <location line="+28"/>
        <source>VPN connection is active. 
Disconnect and logout?</source>
        <translation>VPN 接続が有効です。 
切断してログアウトしますか？</translation>
    </message>
    <message>
        <location line="-27"/>
        <source>Do you want to logout?</source>
        <translation>ログアウトしますか？</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+25"/>
        <source>Logout</source>
        <translation>ログアウト</translation>
    </message>
    <message>
        <location line="+187"/>
        <source>Tavrin Update</source>
        <translation>Tavrin の更新</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Available new update. Download it?</source>
        <translation>新しい更新があります。ダウンロードしますか？</translation>
    </message>
    <message>
        <location line="+49"/>
        <source>Error during downloading update.</source>
        <translation>更新のダウンロード中にエラーが発生しました。</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Error during installing update.</source>
        <translation>更新のインストール中にエラーが発生しました。</translation>
    </message>
    <message>
        <location line="+21"/>
        <source>Your version is outdated. Please, download new Tavrin app on </source>
        <translation>お使いのバージョンは古くなっています。新しい Tavrin アプリをダウンロードしてください: </translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Exit</source>
        <translation>終了</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>VPN connection is active. Disconnect and exit?</source>
        <translation>VPN 接続が有効です。切断して終了しますか？</translation>
    </message>
    <message>
        <source>Change VPN login</source>
        <translation>VPN ログインを変更</translation>
    </message>
    <message>
        <source>VPN connection is active. 
Disconnect and change the VPN login?</source>
        <translation>VPN 接続が有効です。 
切断して VPN ログインを変更しますか？</translation>
    </message>
</context>
<context>
    <name>ProgressDlg</name>
    <message>
        <location filename="../../ui/ProgressDlg.cpp" line="+69"/>
        <source>Update</source>
        <translation>アップデート</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Downloading update. Please wait...</source>
        <translation>アップデートをダウンロードしています。しばらくお待ちください...</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>キャンセル</translation>
    </message>
</context>
<context>
    <name>SearchEdit</name>
    <message>
        <location filename="../../ui/SearchEdit.cpp" line="+14"/>
        <location line="+31"/>
        <source>Location</source>
        <translation>場所</translation>
    </message>
</context>
<context>
    <name>SelectionAccountWindow</name>
    <message>
        <location filename="../../ui/SelectionAccountWindow.cpp" line="+45"/>
        <source>Select VPN login to connect</source>
        <translation>接続するVPNログインを選択</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Continue</source>
        <translation>続行</translation>
    </message>
</context>
<context>
    <name>ServerItemDelegate</name>
    <message>
        <location filename="../../ui/ServerItemDelegate.cpp" line="+41"/>
        <source>%1 ms</source>
        <translation>%1 ミリ秒</translation>
    </message>
    <message>
        <location line="+19"/>
        <source>Latency unknown: not measured yet, or the server did not answer</source>
        <translation>遅延は不明です：まだ測定されていないか、サーバーが応答しませんでした</translation>
    </message>
</context>
<context>
    <name>ServerListWindow</name>
    <message>
        <location filename="../../ui/ServerListWindow.cpp" line="+149"/>
        <source>Locations</source>
        <translation>ロケーション</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Favorites</source>
        <translation>お気に入り</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Standard VPN</source>
        <translation>標準VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Double VPN</source>
        <translation>ダブルVPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Search</source>
        <translation>検索</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No locations found</source>
        <translation>ロケーションが見つかりません</translation>
    </message>
</context>
<context>
    <name>SettingsWindow</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="+176"/>
        <source>Settings</source>
        <translation>設定</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Language:</source>
        <translation>言語:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Choose VPN protocol:</source>
        <translation>VPNプロトコルを選択:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Launch on startup</source>
        <translation>起動時に実行</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Connect to VPN when app is started</source>
        <translation>アプリ起動時にVPNに接続</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change timezone using IP address</source>
        <translation>IPアドレスでタイムゾーンを変更</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>After connection to VPN server</source>
        <translation>VPN サーバーへの接続後</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Kill switch</source>
        <translation>キルスイッチ</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>IPv4, IPv6, DNS4, DNS6 leaks protection</source>
        <translation>IPv4、IPv6、DNS4、DNS6 の漏洩防止</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Allow access to local devices</source>
        <translation>ローカルデバイスへのアクセスを許可</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Printers, routers, etc</source>
        <translation>プリンター、ルーターなど</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Version:</source>
        <translation>バージョン:</translation>
    </message>
</context>
<context>
    <name>ShowLog</name>
    <message>
        <location filename="../../ui/ShowLog.cpp" line="+71"/>
        <source>Connection Details</source>
        <translation>接続の詳細</translation>
    </message>
</context>
<context>
    <name>SubscriptionPurchaseWindow</name>
    <message>
        <location filename="../../ui/SubscriptionPurchaseWindow.cpp" line="+70"/>
        <source>Account</source>
        <translation>アカウント</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>ログアウト</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Your account has no active VPN subscription.</source>
        <translation>お使いのアカウントには有効な VPN サブスクリプションがありません。</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>サイトでVPNサブスクリプションを購入</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>サイトでは Bitcoin、PayPal、Yandex Money などさまざまな決済方法でお支払いいただけます。</translation>
    </message>
</context>
<context>
    <name>SystemTray</name>
    <message>
        <location filename="../../ui/SystemTray.cpp" line="+28"/>
        <source>Connect</source>
        <translation>接続</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+84"/>
        <source>Reconnect</source>
        <translation>再接続</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Disconnect</source>
        <translation>切断</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Quit</source>
        <translation>終了</translation>
    </message>
    <message>
        <location line="-46"/>
        <source>Your connection is not secured now!</source>
        <translation>接続は現在保護されていません！</translation>
    </message>
    <message>
        <location line="+32"/>
        <source>Your connection is encrypted and secured now!</source>
        <translation>接続は暗号化され、保護されています！</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>Connecting to %1</source>
        <translation>%1 に接続中</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connected to %1</source>
        <translation>%1 に接続済み</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection to %1</source>
        <translation>%1 への接続を再確立しています</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connect %1</source>
        <translation>%1 に接続</translation>
    </message>
    <message>
        <source>Tavrin: Internet blocked by the kill switch</source>
        <translation>Tavrin: キルスイッチによりインターネットを遮断中</translation>
    </message>
</context>
<context>
    <name>VpnProtocol</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="-134"/>
        <source>OpenVPN TCP (safer)</source>
        <translation>OpenVPN TCP (より安全)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>OpenVPN UDP (faster)</source>
        <translation>OpenVPN UDP (より高速)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Imitation HTTPS</source>
        <translation>HTTPS偽装</translation>
    </message>
</context>
</TS>
