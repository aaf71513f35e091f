<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ko">
<context>
    <name>AccountWindow</name>
    <message>
        <location filename="../../ui/AccountWindow.cpp" line="+103"/>
        <source>Account</source>
        <translation>계정</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>로그아웃</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login VPN:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change</source>
        <translation>변경</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew on site</source>
        <translation>사이트에서 갱신</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>사이트에서 VPN 구독 구매</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+26"/>
        <source>VPN subscription expires: %1</source>
        <translation>VPN 구독 만료일: %1</translation>
    </message>
</context>
<context>
    <name>ConnectWindow</name>
    <message>
        <location filename="../../ui/ConnectWindow.cpp" line="+195"/>
        <source>Connected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Show connection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Connecting...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Select VPN Location</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Not connected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+17"/>
        <source>%1 B/s</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+2"/>
        <source>%1 KB/s</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>%1 MB/s</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+74"/>
        <source>Error of loading of the config.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the certificate.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the key.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+89"/>
        <source>Timezone changes does not support on your system.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+236"/>
        <source>Firewall does not support on your system.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+61"/>
        <source>Timezone is not changed because of no data.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+36"/>
        <source>VPN subscription expires: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+20"/>
        <source>Name of update file is empty.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../../ui/ConnectWindowForm.cpp" line="+128"/>
        <source>Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Account</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew subscription</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew it on the site to stay protected.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CustomMessageBox</name>
    <message>
        <location filename="../../ui/CustomMessageBox.cpp" line="+78"/>
        <source>Yes</source>
        <translation>예</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No</source>
        <translation>아니요</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ok</source>
        <translation>확인</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>취소</translation>
    </message>
</context>
<context>
    <name>FavoriteServerItemDelegate</name>
    <message>
        <location filename="../../ui/FavoriteServerItemDelegate.cpp" line="+41"/>
        <source>Favorite</source>
        <translation>즐겨찾기</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Recommended</source>
        <translation>추천</translation>
    </message>
</context>
<context>
    <name>LoginWindow</name>
    <message>
        <location filename="../../ui/LoginWindow.cpp" line="+69"/>
        <source>Sign in to your Velmora account</source>
        <translation>Velmora 계정에 로그인하세요</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Username </source>
        <translation>사용자 이름 </translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Password</source>
        <translation>비밀번호</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login</source>
        <translation>로그인</translation>
    </message>
    <message>
        <location line="+35"/>
        <source>You must enter username and password to sign in.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ProgressDlg</name>
    <message>
        <location filename="../../ui/ProgressDlg.cpp" line="+69"/>
        <source>Update</source>
        <translation>업데이트</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Downloading update. Please wait...</source>
        <translation>업데이트를 다운로드하는 중입니다. 잠시 기다려 주세요...</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>취소</translation>
    </message>
</context>
<context>
    <name>SearchEdit</name>
    <message>
        <location filename="../../ui/SearchEdit.cpp" line="+14"/>
        <location line="+31"/>
        <source>Location</source>
        <translation>위치</translation>
    </message>
</context>
<context>
    <name>SelectionAccountWindow</name>
    <message>
        <location filename="../../ui/SelectionAccountWindow.cpp" line="+48"/>
        <source>Select VPN login to connect</source>
        <translation>연결할 VPN 로그인을 선택하세요</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Continue</source>
        <translation>계속</translation>
    </message>
</context>
<context>
    <name>ServerListWindow</name>
    <message>
        <location filename="../../ui/ServerListWindow.cpp" line="+161"/>
        <source>Locations</source>
        <translation>위치</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Favorites</source>
        <translation>즐겨찾기</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Standard VPN</source>
        <translation>표준 VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Double VPN</source>
        <translation>더블 VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Search</source>
        <translation>검색</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No locations found</source>
        <translation>위치를 찾을 수 없습니다</translation>
    </message>
</context>
<context>
    <name>SettingsWindow</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="+188"/>
        <source>Settings</source>
        <translation>설정</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Language:</source>
        <translation>언어:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Choose VPN protocol:</source>
        <translation>VPN 프로토콜 선택:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Launch on startup</source>
        <translation>시작 시 실행</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Connect to VPN when app is started</source>
        <translation>앱 시작 시 VPN에 연결</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change timezone using IP address</source>
        <translation>IP 주소로 시간대 변경</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>After connection to VPN server</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Kill switch</source>
        <translation>킬 스위치</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>IPv4, IPv6, DNS4, DNS6 leaks protection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Allow access to local devices</source>
        <translation>로컬 장치 접근 허용</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Printers, routers, etc</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Version:</source>
        <translation>버전:</translation>
    </message>
</context>
<context>
    <name>ShowLog</name>
    <message>
        <location filename="../../ui/ShowLog.cpp" line="+71"/>
        <source>Connection Details</source>
        <translation>연결 세부 정보</translation>
    </message>
</context>
<context>
    <name>SubscriptionPurchaseWindow</name>
    <message>
        <location filename="../../ui/SubscriptionPurchaseWindow.cpp" line="+76"/>
        <source>Account</source>
        <translation>계정</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>로그아웃</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Your account has no active VPN subscription.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>사이트에서 VPN 구독 구매</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SystemTray</name>
    <message>
        <location filename="../../ui/SystemTray.cpp" line="+28"/>
        <source>Connect</source>
        <translation>연결</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+75"/>
        <source>Reconnect</source>
        <translation>다시 연결</translation>
    </message>
    <message>
        <location line="-74"/>
        <location line="+75"/>
        <source>Disconnect</source>
        <translation>연결 끊기</translation>
    </message>
    <message>
        <location line="-74"/>
        <location line="+75"/>
        <source>Quit</source>
        <translation>종료</translation>
    </message>
    <message>
        <location line="-37"/>
        <source>Your connection is not secured now!</source>
        <translation>현재 연결이 보호되지 않습니다!</translation>
    </message>
    <message>
        <location line="+23"/>
        <source>Your connection is encrypted and secured now!</source>
        <translation>이제 연결이 암호화되어 보호됩니다!</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>Connecting to %1</source>
        <translation>%1에 연결 중</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connected to %1</source>
        <translation>%1에 연결됨</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connect %1</source>
        <translation>%1에 연결</translation>
    </message>
</context>
<context>
    <name>VpnProtocol</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="-146"/>
        <source>OpenVPN TCP (safer)</source>
        <translation>OpenVPN TCP (더 안전)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>OpenVPN UDP (faster)</source>
        <translation>OpenVPN UDP (더 빠름)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Imitation HTTPS</source>
        <translation>HTTPS 위장</translation>
    </message>
</context>
</TS>
