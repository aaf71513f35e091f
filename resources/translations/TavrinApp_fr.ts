<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr">
<context>
    <name>AccountWindow</name>
    <message>
        <location filename="../../ui/AccountWindow.cpp" line="+94"/>
        <source>Account</source>
        <translation>Compte</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>Se déconnecter</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login VPN:</source>
        <translation>Identifiant VPN :</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change</source>
        <translation>Changer</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew on site</source>
        <translation>Renouveler sur le site</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>Acheter un abonnement VPN sur le site</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>Sur le site, nous acceptons les paiements par différents moyens, dont Bitcoin, PayPal, Yandex Money et d&apos;autres.</translation>
    </message>
    <message>
        <location line="+26"/>
        <source>VPN subscription expires: %1</source>
        <translation>L&apos;abonnement VPN expire le : %1</translation>
    </message>
</context>
<context>
    <name>ConnectWindow</name>
    <message>
        <location filename="../../ui/ConnectWindow.cpp" line="+210"/>
        <source>Connected</source>
        <translation>Connecté</translation>
    </message>
    <message>
        <location line="-1"/>
        <location line="+4"/>
        <location line="+3"/>
        <source>Show connection</source>
        <translation>Afficher la connexion</translation>
    </message>
    <message>
        <location line="-2"/>
        <source>Connecting...</source>
        <translation>Connexion...</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection...</source>
        <translation>Rétablissement de la connexion...</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Select VPN Location</source>
        <translation>Choisir un emplacement VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Not connected</source>
        <translation>Non connecté</translation>
    </message>
    <message>
        <location line="+17"/>
        <source>%1 B/s</source>
        <translation>%1 o/s</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>%1 KB/s</source>
        <translation>%1 Ko/s</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>%1 MB/s</source>
        <translation>%1 Mo/s</translation>
    </message>
    <message>
        <location line="+84"/>
        <source>Error of loading of the config.</source>
        <translation>Erreur de chargement de la configuration.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the certificate.</source>
        <translation>Erreur de chargement du certificat.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the key.</source>
        <translation>Erreur de chargement de la clé.</translation>
    </message>
    <message>
        <location line="+99"/>
        <source>Timezone changes does not support on your system.</source>
        <translation>Le changement de fuseau horaire n&apos;est pas pris en charge sur votre système.</translation>
    </message>
    <message>
        <location line="+257"/>
        <source>Firewall does not support on your system.</source>
        <translation>Le pare-feu n&apos;est pas pris en charge sur votre système.</translation>
    </message>
    <message>
        <location line="+63"/>
        <source>Timezone is not changed because of no data.</source>
        <translation>Le fuseau horaire n&apos;a pas été changé faute de données.</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>VPN subscription expires: %1</source>
        <translation>L&apos;abonnement VPN expire : %1</translation>
    </message>
    <message>
        <location line="+20"/>
        <source>Name of update file is empty.</source>
        <translation>Le nom du fichier de mise à jour est vide.</translation>
    </message>
    <message>
        <location filename="../../ui/ConnectWindowForm.cpp" line="+132"/>
        <source>Settings</source>
        <translation>Paramètres</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Account</source>
        <translation>Compte</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew subscription</source>
        <translation>Renouveler l&apos;abonnement</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew it on the site to stay protected.</source>
        <translation>Renouvelez-le sur le site pour rester protégé.</translation>
    </message>
    <message>
        <source>Disconnect first to change the settings</source>
        <translation>Déconnectez-vous d'abord pour modifier les paramètres</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected.</source>
        <translation>La coupure d’urgence bloque Internet tant que vous n’êtes pas connecté.</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>Modifier</translation>
    </message>
</context>
<context>
    <name>CustomMessageBox</name>
    <message>
        <location filename="../../ui/CustomMessageBox.cpp" line="+59"/>
        <source>The identity of the Velmora service could not be verified, so nothing was sent to it.</source>
        <translation>L&apos;identité du service Velmora n&apos;a pas pu être vérifiée, donc rien ne lui a été envoyé.</translation>
    </message>
    <message>
        <location line="+24"/>
        <source>Yes</source>
        <translation>Oui</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No</source>
        <translation>Non</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ok</source>
        <translation>OK</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>Open in a browser</source>
        <translation>Ouvrir dans un navigateur</translation>
    </message>
    <message>
        <source>No web browser could be opened. Copy this link into one:</source>
        <translation>Aucun navigateur web n'a pu être ouvert. Copiez ce lien dans un navigateur :</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected, so this page cannot load now. Connect first, or turn the kill switch off, then open this link:</source>
        <translation>La coupure d’urgence bloque Internet tant que vous n’êtes pas connecté : cette page ne peut pas se charger pour l’instant. Connectez-vous d’abord ou désactivez la coupure d’urgence, puis ouvrez ce lien :</translation>
    </message>
</context>
<context>
    <name>FavoriteServerItemDelegate</name>
    <message>
        <location filename="../../ui/FavoriteServerItemDelegate.cpp" line="+41"/>
        <source>Favorite</source>
        <translation>Favoris</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Recommended</source>
        <translation>Recommandés</translation>
    </message>
</context>
<context>
    <name>LoginWindow</name>
    <message>
        <location filename="../../ui/LoginWindow.cpp" line="+66"/>
        <source>Sign in to your Velmora account</source>
        <translation>Connectez-vous à votre compte Velmora</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Username </source>
        <translation>Nom d&apos;utilisateur </translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Password</source>
        <translation>Mot de passe</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login</source>
        <translation>Se connecter</translation>
    </message>
    <message>
        <location line="+35"/>
        <source>You must enter username and password to sign in.</source>
        <translation>Vous devez saisir l&apos;identifiant et le mot de passe pour vous connecter.</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <location filename="../../ui/MainWindow.cpp" line="+142"/>
        <source>Failed to install helper for program. Please contact support.</source>
        <translation>Impossible d&apos;installer l&apos;assistant du programme. Veuillez contacter le support.</translation>
    </message>
    <message>
        <location line="+128"/>
        <source>Wrong Login/Password.</source>
        <translation>Identifiant ou mot de passe incorrect.</translation>
    </message>
    <message>
        <location line="+29"/>
        <source>Application has no access to Velmora</source>
        <translation>L&apos;application n&apos;a pas accès à Velmora</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Application has no access to network.</source>
        <translation>L&apos;application n&apos;a pas accès au réseau.</translation>
    </message>
    <message>
        <location line="+144"/>
        <location line="+28"/>
        <source>VPN connection is active. 
Disconnect and logout?</source>
        <translation>La connexion VPN est active. 
Se déconnecter du VPN et du compte ?</translation>
    </message>
    <message>
        <location line="-27"/>
        <source>Do you want to logout?</source>
        <translation>Voulez-vous vous déconnecter ?</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+25"/>
        <source>Logout</source>
        <translation>Déconnexion</translation>
    </message>
    <message>
        <location line="+187"/>
        <source>Tavrin Update</source>
        <translation>Mise à jour de Tavrin</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Available new update. Download it?</source>
        <translation>Une nouvelle mise à jour est disponible. La télécharger ?</translation>
    </message>
    <message>
        <location line="+49"/>
        <source>Error during downloading update.</source>
        <translation>Erreur lors du téléchargement de la mise à jour.</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Error during installing update.</source>
        <translation>Erreur lors de l&apos;installation de la mise à jour.</translation>
    </message>
    <message>
        <location line="+21"/>
        <source>Your version is outdated. Please, download new Tavrin app on </source>
        <translation>Votre version est obsolète. Veuillez télécharger la nouvelle application Tavrin sur </translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Exit</source>
        <translation>Quitter</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>VPN connection is active. Disconnect and exit?</source>
        <translation>La connexion VPN est active. Se déconnecter et quitter ?</translation>
    </message>
    <message>
        <source>Change VPN login</source>
        <translation>Changer d'identifiant VPN</translation>
    </message>
    <message>
        <source>VPN connection is active. 
Disconnect and change the VPN login?</source>
        <translation>La connexion VPN est active. 
Se déconnecter et changer d'identifiant VPN ?</translation>
    </message>
</context>
<context>
    <name>ProgressDlg</name>
    <message>
        <location filename="../../ui/ProgressDlg.cpp" line="+69"/>
        <source>Update</source>
        <translation>Mise à jour</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Downloading update. Please wait...</source>
        <translation>Téléchargement de la mise à jour. Veuillez patienter...</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
</context>
<context>
    <name>SearchEdit</name>
    <message>
        <location filename="../../ui/SearchEdit.cpp" line="+14"/>
        <location line="+31"/>
        <source>Location</source>
        <translation>Emplacement</translation>
    </message>
</context>
<context>
    <name>SelectionAccountWindow</name>
    <message>
        <location filename="../../ui/SelectionAccountWindow.cpp" line="+45"/>
        <source>Select VPN login to connect</source>
        <translation>Choisissez l&apos;identifiant VPN pour vous connecter</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Continue</source>
        <translation>Continuer</translation>
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
        <translation>Latence inconnue : pas encore mesurée, ou le serveur n’a pas répondu</translation>
    </message>
</context>
<context>
    <name>ServerListWindow</name>
    <message>
        <location filename="../../ui/ServerListWindow.cpp" line="+149"/>
        <source>Locations</source>
        <translation>Emplacements</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Favorites</source>
        <translation>Favoris</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Standard VPN</source>
        <translation>VPN standard</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Double VPN</source>
        <translation>Double VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Search</source>
        <translation>Rechercher</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No locations found</source>
        <translation>Aucun emplacement trouvé</translation>
    </message>
</context>
<context>
    <name>SettingsWindow</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="+176"/>
        <source>Settings</source>
        <translation>Paramètres</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Language:</source>
        <translation>Langue :</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Choose VPN protocol:</source>
        <translation>Choisissez le protocole VPN :</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Launch on startup</source>
        <translation>Lancer au démarrage</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Connect to VPN when app is started</source>
        <translation>Connecter le VPN au lancement</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change timezone using IP address</source>
        <translation>Fuseau horaire selon l&apos;IP</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>After connection to VPN server</source>
        <translation>Après la connexion au serveur VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Kill switch</source>
        <translation>Coupure d&apos;urgence</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>IPv4, IPv6, DNS4, DNS6 leaks protection</source>
        <translation>Protection contre les fuites IPv4, IPv6, DNS4, DNS6</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Allow access to local devices</source>
        <translation>Accès aux appareils locaux</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Printers, routers, etc</source>
        <translation>Imprimantes, routeurs, etc.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Version:</source>
        <translation>Version :</translation>
    </message>
</context>
<context>
    <name>ShowLog</name>
    <message>
        <location filename="../../ui/ShowLog.cpp" line="+71"/>
        <source>Connection Details</source>
        <translation>Détails de la connexion</translation>
    </message>
</context>
<context>
    <name>SubscriptionPurchaseWindow</name>
    <message>
        <location filename="../../ui/SubscriptionPurchaseWindow.cpp" line="+70"/>
        <source>Account</source>
        <translation>Compte</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>Se déconnecter</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Your account has no active VPN subscription.</source>
        <translation>Votre compte n&apos;a pas d&apos;abonnement VPN actif.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>Acheter un abonnement VPN sur le site</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>Sur le site, nous acceptons les paiements par différents moyens, dont Bitcoin, PayPal, Yandex Money et d&apos;autres.</translation>
    </message>
</context>
<context>
    <name>SystemTray</name>
    <message>
        <location filename="../../ui/SystemTray.cpp" line="+28"/>
        <source>Connect</source>
        <translation>Se connecter</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+84"/>
        <source>Reconnect</source>
        <translation>Se reconnecter</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Disconnect</source>
        <translation>Se déconnecter</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Quit</source>
        <translation>Quitter</translation>
    </message>
    <message>
        <location line="-46"/>
        <source>Your connection is not secured now!</source>
        <translation>Votre connexion n&apos;est plus sécurisée !</translation>
    </message>
    <message>
        <location line="+32"/>
        <source>Your connection is encrypted and secured now!</source>
        <translation>Votre connexion est désormais chiffrée et sécurisée !</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>Connecting to %1</source>
        <translation>Connexion à %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connected to %1</source>
        <translation>Connecté à %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection to %1</source>
        <translation>Rétablissement de la connexion à %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connect %1</source>
        <translation>Se connecter à %1</translation>
    </message>
    <message>
        <source>Tavrin: Internet blocked by the kill switch</source>
        <translation>Tavrin : Internet bloqué par la coupure d’urgence</translation>
    </message>
</context>
<context>
    <name>VpnProtocol</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="-134"/>
        <source>OpenVPN TCP (safer)</source>
        <translation>OpenVPN TCP (plus sûr)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>OpenVPN UDP (faster)</source>
        <translation>OpenVPN UDP (plus rapide)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Imitation HTTPS</source>
        <translation>Imitation HTTPS</translation>
    </message>
</context>
</TS>
