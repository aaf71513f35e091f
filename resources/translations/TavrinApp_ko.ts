<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ko">
<context>
    <name>AccountWindow</name>
    <message>
        <location filename="../../ui/AccountWindow.cpp" line="+94"/>
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
        <translation>VPN 로그인:</translation>
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
        <translation>사이트에서는 Bitcoin, PayPal, Yandex Money 등 다양한 결제 수단으로 결제할 수 있습니다.</translation>
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
        <location filename="../../ui/ConnectWindow.cpp" line="+210"/>
        <source>Connected</source>
        <translation>연결됨</translation>
    </message>
    <message>
        <location line="-1"/>
        <location line="+4"/>
        <location line="+3"/>
        <source>Show connection</source>
        <translation>연결 보기</translation>
    </message>
    <message>
        <location line="-2"/>
        <source>Connecting...</source>
        <translation>연결 중...</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection...</source>
        <translation>연결을 다시 설정하는 중...</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Select VPN Location</source>
        <translation>VPN 위치 선택</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Not connected</source>
        <translation>연결되지 않음</translation>
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
        <translation>구성을 불러오는 중 오류가 발생했습니다.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the certificate.</source>
        <translation>인증서를 불러오는 중 오류가 발생했습니다.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the key.</source>
        <translation>키를 불러오는 중 오류가 발생했습니다.</translation>
    </message>
    <message>
        <location line="+99"/>
        <source>Timezone changes does not support on your system.</source>
        <translation>시스템에서 시간대 변경을 지원하지 않습니다.</translation>
    </message>
    <message>
        <location line="+257"/>
        <source>Firewall does not support on your system.</source>
        <translation>시스템에서 방화벽을 지원하지 않습니다.</translation>
    </message>
    <message>
        <location line="+63"/>
        <source>Timezone is not changed because of no data.</source>
        <translation>데이터가 없어 시간대를 변경하지 않았습니다.</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>VPN subscription expires: %1</source>
        <translation>VPN 구독 만료일: %1</translation>
    </message>
    <message>
        <location line="+20"/>
        <source>Name of update file is empty.</source>
        <translation>업데이트 파일 이름이 비어 있습니다.</translation>
    </message>
    <message>
        <location filename="../../ui/ConnectWindowForm.cpp" line="+132"/>
        <source>Settings</source>
        <translation>설정</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Account</source>
        <translation>계정</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew subscription</source>
        <translation>구독 갱신</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew it on the site to stay protected.</source>
        <translation>보호를 유지하려면 사이트에서 갱신하세요.</translation>
    </message>
    <message>
        <source>Disconnect first to change the settings</source>
        <translation>설정을 변경하려면 먼저 연결을 끊으세요</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected.</source>
        <translation>연결되어 있지 않은 동안 킬 스위치가 인터넷을 차단합니다.</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>변경</translation>
    </message>
</context>
<context>
    <name>CustomMessageBox</name>
    <message>
        <location filename="../../ui/CustomMessageBox.cpp" line="+59"/>
        <source>The identity of the Velmora service could not be verified, so nothing was sent to it.</source>
        <translation>Velmora 서비스의 신원을 확인할 수 없어 아무것도 보내지 않았습니다.</translation>
    </message>
    <message>
        <location line="+24"/>
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
    <message>
        <source>Open in a browser</source>
        <translation>브라우저에서 열기</translation>
    </message>
    <message>
        <source>No web browser could be opened. Copy this link into one:</source>
        <translation>웹 브라우저를 열 수 없습니다. 이 링크를 브라우저에 복사하세요:</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected, so this page cannot load now. Connect first, or turn the kill switch off, then open this link:</source>
        <translation>연결되어 있지 않은 동안 킬 스위치가 인터넷을 차단하므로 지금은 이 페이지를 열 수 없습니다. 먼저 연결하거나 킬 스위치를 끈 다음 이 링크를 여세요:</translation>
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
        <location filename="../../ui/LoginWindow.cpp" line="+66"/>
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
        <translation>로그인하려면 사용자 이름과 비밀번호를 입력해야 합니다.</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <location filename="../../ui/MainWindow.cpp" line="+142"/>
        <source>Failed to install helper for program. Please contact support.</source>
        <translation>프로그램 도우미를 설치하지 못했습니다. 지원팀에 문의하세요.</translation>
    </message>
    <message>
        <location line="+128"/>
        <source>Wrong Login/Password.</source>
        <translation>로그인 또는 비밀번호가 잘못되었습니다.</translation>
    </message>
    <message>
        <location line="+29"/>
        <source>Application has no access to Velmora</source>
        <translation>애플리케이션이 Velmora에 접속할 수 없습니다</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Application has no access to network.</source>
        <translation>애플리케이션이 네트워크에 접속할 수 없습니다.</translation>
    </message>
    <message>
        <location line="+144"/>
        <location line="+28"/>
        <source>VPN connection is active. 
Disconnect and logout?</source>
        <translation>VPN 연결이 활성 상태입니다. 
연결을 끊고 로그아웃할까요?</translation>
    </message>
    <message>
        <location line="-27"/>
        <source>Do you want to logout?</source>
        <translation>로그아웃할까요?</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+25"/>
        <source>Logout</source>
        <translation>로그아웃</translation>
    </message>
    <message>
        <location line="+187"/>
        <source>Tavrin Update</source>
        <translation>Tavrin 업데이트</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Available new update. Download it?</source>
        <translation>새 업데이트가 있습니다. 다운로드할까요?</translation>
    </message>
    <message>
        <location line="+49"/>
        <source>Error during downloading update.</source>
        <translation>업데이트를 다운로드하는 중 오류가 발생했습니다.</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Error during installing update.</source>
        <translation>업데이트를 설치하는 중 오류가 발생했습니다.</translation>
    </message>
    <message>
        <location line="+21"/>
        <source>Your version is outdated. Please, download new Tavrin app on </source>
        <translation>사용 중인 버전이 오래되었습니다. 새 Tavrin 앱을 다운로드하세요: </translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Exit</source>
        <translation>종료</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>VPN connection is active. Disconnect and exit?</source>
        <translation>VPN 연결이 활성 상태입니다. 연결을 끊고 종료할까요?</translation>
    </message>
    <message>
        <source>Change VPN login</source>
        <translation>VPN 로그인 변경</translation>
    </message>
    <message>
        <source>VPN connection is active. 
Disconnect and change the VPN login?</source>
        <translation>VPN 연결이 활성 상태입니다. 
연결을 끊고 VPN 로그인을 변경할까요?</translation>
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
        <location filename="../../ui/SelectionAccountWindow.cpp" line="+45"/>
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
    <name>ServerItemDelegate</name>
    <message>
        <location filename="../../ui/ServerItemDelegate.cpp" line="+41"/>
        <source>%1 ms</source>
        <translation>%1 ms</translation>
    </message>
    <message>
        <location line="+19"/>
        <source>Latency unknown: not measured yet, or the server did not answer</source>
        <translation>지연 시간 알 수 없음: 아직 측정되지 않았거나 서버가 응답하지 않았습니다</translation>
    </message>
</context>
<context>
    <name>ServerListWindow</name>
    <message>
        <location filename="../../ui/ServerListWindow.cpp" line="+149"/>
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
        <location filename="../../ui/SettingsWindow.cpp" line="+176"/>
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
        <translation>VPN 서버에 연결한 후</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Kill switch</source>
        <translation>킬 스위치</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>IPv4, IPv6, DNS4, DNS6 leaks protection</source>
        <translation>IPv4, IPv6, DNS4, DNS6 유출 방지</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Allow access to local devices</source>
        <translation>로컬 장치 접근 허용</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Printers, routers, etc</source>
        <translation>프린터, 라우터 등</translation>
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
        <location filename="../../ui/SubscriptionPurchaseWindow.cpp" line="+70"/>
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
        <translation>계정에 활성 VPN 구독이 없습니다.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>사이트에서 VPN 구독 구매</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>사이트에서는 Bitcoin, PayPal, Yandex Money 등 다양한 결제 수단으로 결제할 수 있습니다.</translation>
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
        <location line="+84"/>
        <source>Reconnect</source>
        <translation>다시 연결</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Disconnect</source>
        <translation>연결 끊기</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Quit</source>
        <translation>종료</translation>
    </message>
    <message>
        <location line="-46"/>
        <source>Your connection is not secured now!</source>
        <translation>현재 연결이 보호되지 않습니다!</translation>
    </message>
    <message>
        <location line="+32"/>
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
        <source>Re-establishing the connection to %1</source>
        <translation>%1 연결을 다시 설정하는 중</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connect %1</source>
        <translation>%1에 연결</translation>
    </message>
    <message>
        <source>Tavrin: Internet blocked by the kill switch</source>
        <translation>Tavrin: 킬 스위치가 인터넷을 차단함</translation>
    </message>
</context>
<context>
    <name>VpnProtocol</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="-134"/>
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
