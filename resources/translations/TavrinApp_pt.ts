<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="pt">
<context>
    <name>AccountWindow</name>
    <message>
        <location filename="../../ui/AccountWindow.cpp" line="+94"/>
        <source>Account</source>
        <translation>Conta</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>Sair</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login VPN:</source>
        <translation>Login VPN:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change</source>
        <translation>Alterar</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew on site</source>
        <translation>Renovar no site</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>Comprar assinatura VPN no site</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>No site aceitamos pagamentos por vários sistemas de pagamento, incluindo Bitcoin, PayPal, Yandex Money e outros.</translation>
    </message>
    <message>
        <location line="+26"/>
        <source>VPN subscription expires: %1</source>
        <translation>A assinatura VPN expira em: %1</translation>
    </message>
</context>
<context>
    <name>ConnectWindow</name>
    <message>
        <location filename="../../ui/ConnectWindow.cpp" line="+210"/>
        <source>Connected</source>
        <translation>Conectado</translation>
    </message>
    <message>
        <location line="-1"/>
        <location line="+4"/>
        <location line="+3"/>
        <source>Show connection</source>
        <translation>Mostrar conexão</translation>
    </message>
    <message>
        <location line="-2"/>
        <source>Connecting...</source>
        <translation>Conectando...</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection...</source>
        <translation>Restabelecendo a conexão...</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Select VPN Location</source>
        <translation>Escolher local da VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Not connected</source>
        <translation>Não conectado</translation>
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
        <translation>Erro ao carregar a configuração.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the certificate.</source>
        <translation>Erro ao carregar o certificado.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the key.</source>
        <translation>Erro ao carregar a chave.</translation>
    </message>
    <message>
        <location line="+99"/>
        <source>Timezone changes does not support on your system.</source>
        <translation>A mudança de fuso horário não é suportada no seu sistema.</translation>
    </message>
    <message>
        <location line="+257"/>
        <source>Firewall does not support on your system.</source>
        <translation>O firewall não é suportado no seu sistema.</translation>
    </message>
    <message>
        <location line="+63"/>
        <source>Timezone is not changed because of no data.</source>
        <translation>O fuso horário não foi alterado por falta de dados.</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>VPN subscription expires: %1</source>
        <translation>A assinatura VPN expira: %1</translation>
    </message>
    <message>
        <location line="+20"/>
        <source>Name of update file is empty.</source>
        <translation>O nome do arquivo de atualização está vazio.</translation>
    </message>
    <message>
        <location filename="../../ui/ConnectWindowForm.cpp" line="+132"/>
        <source>Settings</source>
        <translation>Configurações</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Account</source>
        <translation>Conta</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew subscription</source>
        <translation>Renovar assinatura</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew it on the site to stay protected.</source>
        <translation>Renove no site para continuar protegido.</translation>
    </message>
    <message>
        <source>Disconnect first to change the settings</source>
        <translation>Desconecte primeiro para alterar as configurações</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected.</source>
        <translation>O interruptor de emergência bloqueia a Internet enquanto você não estiver conectado.</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>Alterar</translation>
    </message>
</context>
<context>
    <name>CustomMessageBox</name>
    <message>
        <location filename="../../ui/CustomMessageBox.cpp" line="+59"/>
        <source>The identity of the Velmora service could not be verified, so nothing was sent to it.</source>
        <translation>Não foi possível verificar a identidade do serviço Velmora, então nada foi enviado a ele.</translation>
    </message>
    <message>
        <location line="+24"/>
        <source>Yes</source>
        <translation>Sim</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No</source>
        <translation>Não</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ok</source>
        <translation>OK</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>Cancelar</translation>
    </message>
    <message>
        <source>Open in a browser</source>
        <translation>Abrir em um navegador</translation>
    </message>
    <message>
        <source>No web browser could be opened. Copy this link into one:</source>
        <translation>Não foi possível abrir um navegador. Copie este link para um navegador:</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected, so this page cannot load now. Connect first, or turn the kill switch off, then open this link:</source>
        <translation>O interruptor de emergência bloqueia a Internet enquanto você não estiver conectado, por isso esta página não pode carregar agora. Conecte-se primeiro ou desligue o interruptor de emergência e depois abra este link:</translation>
    </message>
</context>
<context>
    <name>FavoriteServerItemDelegate</name>
    <message>
        <location filename="../../ui/FavoriteServerItemDelegate.cpp" line="+41"/>
        <source>Favorite</source>
        <translation>Favoritos</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Recommended</source>
        <translation>Recomendados</translation>
    </message>
</context>
<context>
    <name>LoginWindow</name>
    <message>
        <location filename="../../ui/LoginWindow.cpp" line="+66"/>
        <source>Sign in to your Velmora account</source>
        <translation>Entre na sua conta Velmora</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Username </source>
        <translation>Nome de usuário </translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Password</source>
        <translation>Senha</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login</source>
        <translation>Entrar</translation>
    </message>
    <message>
        <location line="+35"/>
        <source>You must enter username and password to sign in.</source>
        <translation>Você deve informar o usuário e a senha para entrar.</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <location filename="../../ui/MainWindow.cpp" line="+142"/>
        <source>Failed to install helper for program. Please contact support.</source>
        <translation>Falha ao instalar o auxiliar do programa. Entre em contato com o suporte.</translation>
    </message>
    <message>
        <location line="+128"/>
        <source>Wrong Login/Password.</source>
        <translation>Login ou senha incorretos.</translation>
    </message>
    <message>
        <location line="+29"/>
        <source>Application has no access to Velmora</source>
        <translation>O aplicativo não tem acesso ao Velmora</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Application has no access to network.</source>
        <translation>O aplicativo não tem acesso à rede.</translation>
    </message>
    <message>
        <location line="+144"/>
        <location line="+28"/>
        <source>VPN connection is active. 
Disconnect and logout?</source>
        <translation>A conexão VPN está ativa. 
Desconectar e sair?</translation>
    </message>
    <message>
        <location line="-27"/>
        <source>Do you want to logout?</source>
        <translation>Deseja sair?</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+25"/>
        <source>Logout</source>
        <translation>Sair</translation>
    </message>
    <message>
        <location line="+187"/>
        <source>Tavrin Update</source>
        <translation>Atualização do Tavrin</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Available new update. Download it?</source>
        <translation>Há uma nova atualização. Baixar agora?</translation>
    </message>
    <message>
        <location line="+49"/>
        <source>Error during downloading update.</source>
        <translation>Erro ao baixar a atualização.</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Error during installing update.</source>
        <translation>Erro ao instalar a atualização.</translation>
    </message>
    <message>
        <location line="+21"/>
        <source>Your version is outdated. Please, download new Tavrin app on </source>
        <translation>Sua versão está desatualizada. Baixe o novo aplicativo Tavrin em </translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Exit</source>
        <translation>Sair</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>VPN connection is active. Disconnect and exit?</source>
        <translation>A conexão VPN está ativa. Desconectar e sair?</translation>
    </message>
    <message>
        <source>Change VPN login</source>
        <translation>Alterar login VPN</translation>
    </message>
    <message>
        <source>VPN connection is active. 
Disconnect and change the VPN login?</source>
        <translation>A conexão VPN está ativa. 
Desconectar e alterar o login VPN?</translation>
    </message>
</context>
<context>
    <name>ProgressDlg</name>
    <message>
        <location filename="../../ui/ProgressDlg.cpp" line="+69"/>
        <source>Update</source>
        <translation>Atualização</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Downloading update. Please wait...</source>
        <translation>Baixando a atualização. Aguarde...</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>Cancelar</translation>
    </message>
</context>
<context>
    <name>SearchEdit</name>
    <message>
        <location filename="../../ui/SearchEdit.cpp" line="+14"/>
        <location line="+31"/>
        <source>Location</source>
        <translation>Localização</translation>
    </message>
</context>
<context>
    <name>SelectionAccountWindow</name>
    <message>
        <location filename="../../ui/SelectionAccountWindow.cpp" line="+45"/>
        <source>Select VPN login to connect</source>
        <translation>Selecione o login VPN para conectar</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Continue</source>
        <translation>Continuar</translation>
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
        <translation>Latência desconhecida: ainda não medida, ou o servidor não respondeu</translation>
    </message>
</context>
<context>
    <name>ServerListWindow</name>
    <message>
        <location filename="../../ui/ServerListWindow.cpp" line="+149"/>
        <source>Locations</source>
        <translation>Locais</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Favorites</source>
        <translation>Favoritos</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Standard VPN</source>
        <translation>VPN padrão</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Double VPN</source>
        <translation>VPN duplo</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Search</source>
        <translation>Pesquisar</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No locations found</source>
        <translation>Nenhum local encontrado</translation>
    </message>
</context>
<context>
    <name>SettingsWindow</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="+176"/>
        <source>Settings</source>
        <translation>Configurações</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Language:</source>
        <translation>Idioma:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Choose VPN protocol:</source>
        <translation>Escolha o protocolo VPN:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Launch on startup</source>
        <translation>Iniciar com o sistema</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Connect to VPN when app is started</source>
        <translation>Conectar a VPN ao iniciar</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change timezone using IP address</source>
        <translation>Fuso horário pelo IP</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>After connection to VPN server</source>
        <translation>Após conectar ao servidor VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Kill switch</source>
        <translation>Interruptor de emergência</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>IPv4, IPv6, DNS4, DNS6 leaks protection</source>
        <translation>Proteção contra vazamentos IPv4, IPv6, DNS4, DNS6</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Allow access to local devices</source>
        <translation>Acesso a dispositivos locais</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Printers, routers, etc</source>
        <translation>Impressoras, roteadores etc.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Version:</source>
        <translation>Versão:</translation>
    </message>
</context>
<context>
    <name>ShowLog</name>
    <message>
        <location filename="../../ui/ShowLog.cpp" line="+71"/>
        <source>Connection Details</source>
        <translation>Detalhes da conexão</translation>
    </message>
</context>
<context>
    <name>SubscriptionPurchaseWindow</name>
    <message>
        <location filename="../../ui/SubscriptionPurchaseWindow.cpp" line="+70"/>
        <source>Account</source>
        <translation>Conta</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>Sair</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Your account has no active VPN subscription.</source>
        <translation>Sua conta não tem uma assinatura VPN ativa.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>Comprar assinatura VPN no site</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>No site aceitamos pagamentos por vários sistemas de pagamento, incluindo Bitcoin, PayPal, Yandex Money e outros.</translation>
    </message>
</context>
<context>
    <name>SystemTray</name>
    <message>
        <location filename="../../ui/SystemTray.cpp" line="+28"/>
        <source>Connect</source>
        <translation>Conectar</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+84"/>
        <source>Reconnect</source>
        <translation>Reconectar</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Disconnect</source>
        <translation>Desconectar</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Quit</source>
        <translation>Sair</translation>
    </message>
    <message>
        <location line="-46"/>
        <source>Your connection is not secured now!</source>
        <translation>Sua conexão não está protegida agora!</translation>
    </message>
    <message>
        <location line="+32"/>
        <source>Your connection is encrypted and secured now!</source>
        <translation>Sua conexão agora está criptografada e protegida!</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>Connecting to %1</source>
        <translation>Conectando a %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connected to %1</source>
        <translation>Conectado a %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection to %1</source>
        <translation>Restabelecendo a conexão com %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connect %1</source>
        <translation>Conectar a %1</translation>
    </message>
    <message>
        <source>Tavrin: Internet blocked by the kill switch</source>
        <translation>Tavrin: Internet bloqueada pelo interruptor de emergência</translation>
    </message>
</context>
<context>
    <name>VpnProtocol</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="-134"/>
        <source>OpenVPN TCP (safer)</source>
        <translation>OpenVPN TCP (mais seguro)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>OpenVPN UDP (faster)</source>
        <translation>OpenVPN UDP (mais rápido)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Imitation HTTPS</source>
        <translation>Imitação de HTTPS</translation>
    </message>
</context>
</TS>
