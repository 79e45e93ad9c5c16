<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
<context>
    <name></name>
    <message id="bramd-ap-name">
        <source>Android apps</source>
        <extracomment>Application name of the notices about installed and removed apps.</extracomment>
        <translation>Applications Android</translation>
    </message>
    <message id="bramd-install-success">
        <source>App installed</source>
        <extracomment>Title of a notice; followed by a colon and the app's name when it is known.</extracomment>
        <translation>Application installée</translation>
    </message>
    <message id="bramd-install-failed">
        <source>App could not be installed</source>
        <extracomment>Title of a notice; followed by a colon and the app's name when it is known.</extracomment>
        <translation>Impossible d’installer l’application</translation>
    </message>
    <message id="bramd-uninstall-success">
        <source>App removed</source>
        <extracomment>Title of a notice; followed by a colon and the package name when it is known.</extracomment>
        <translation>Application supprimée</translation>
    </message>
    <message id="bramd-uninstall-failed">
        <source>App could not be removed</source>
        <extracomment>Title of a notice; followed by a colon and the package name when it is known.</extracomment>
        <translation>Impossible de supprimer l’application</translation>
    </message>
    <message id="bramd-app_installation_disallowed">
        <source>Installing apps is not allowed on this device. Ask the person who manages it to allow it.</source>
        <extracomment>Body of the warning that an installation was refused because of the device policy.</extracomment>
        <translation>L’installation d’applications n’est pas autorisée sur cet appareil. Demandez l’autorisation à la personne qui le gère.</translation>
    </message>
    <message id="bramd-app_uninstallation_disallowed">
        <source>Removing apps is not allowed on this device. Ask the person who manages it to allow it.</source>
        <extracomment>Body of the warning that a removal was refused because of the device policy.</extracomment>
        <translation>La suppression d’applications n’est pas autorisée sur cet appareil. Demandez l’autorisation à la personne qui le gère.</translation>
    </message>
    <message id="bramd-launch_umbra_to_start_android_app">
        <source>Android is starting. %1 will open in a moment.</source>
        <extracomment>Body of the notice shown while the Android runtime starts up; %1 is the app's name.</extracomment>
        <translation>Android démarre. %1 va s’ouvrir dans un instant.</translation>
    </message>
    <message id="Aborted">
        <source>The installation was cancelled. Start it again if you want the app.</source>
        <extracomment>Why an installation failed: it was cancelled or not confirmed.</extracomment>
        <translation>L’installation a été annulée. Relancez-la si vous voulez l’application.</translation>
    </message>
    <message id="bramd-install-fail-incompat">
        <source>The app does not support this device or its Android version. Look for a version of the app that does.</source>
        <extracomment>Why an installation failed: the app needs another Android release, processor or feature.</extracomment>
        <translation>L’application n’est pas compatible avec cet appareil ou sa version d’Android. Cherchez une version de l’application qui le soit.</translation>
    </message>
    <message id="bramd-install-fail-conflict">
        <source>The app conflicts with one that is already installed, such as a newer or differently signed version. Remove that app first, then try again.</source>
        <extracomment>Why an installation failed: it clashes with what is installed already.</extracomment>
        <translation>L’application est en conflit avec une autre déjà installée, par exemple une version plus récente ou signée autrement. Supprimez d’abord celle-ci, puis réessayez.</translation>
    </message>
    <message id="bramd-install-fail-invalid">
        <source>The app file is damaged or is not an Android app. Download it again, then try again.</source>
        <extracomment>Why an installation failed: the file is damaged, unsigned or not an app at all.</extracomment>
        <translation>Le fichier est endommagé ou n’est pas une application Android. Téléchargez-le à nouveau, puis réessayez.</translation>
    </message>
    <message id="bramd-install-fail-storage">
        <source>There is not enough storage space, or the storage is not available. Free up some space, then try again.</source>
        <extracomment>Why an installation failed: no space, or the storage cannot be used.</extracomment>
        <translation>L’espace de stockage est insuffisant ou le stockage n’est pas disponible. Libérez de l’espace, puis réessayez.</translation>
    </message>
    <message id="bramd-install-fail-other">
        <source>Android could not install the app. Restart the device, then try again.</source>
        <extracomment>Why an installation failed: any other reason.</extracomment>
        <translation>Android n’a pas pu installer l’application. Redémarrez l’appareil, puis réessayez.</translation>
    </message>
    <message id="bramd-installing">
        <source>Installing app</source>
        <extracomment>Title of a notice; followed by a colon and the name of the file.</extracomment>
        <translation>Installation de l’application</translation>
    </message>
    <message id="bramd-install-no-file">
        <source>This is no app file on the device that can be used. Look where the file is now, or download it again.</source>
        <extracomment>Body of the notice that an app file that was opened is not there, is a directory, a web address or no app, or cannot be read.</extracomment>
        <translation>Ce n’est pas un fichier d’application utilisable sur cet appareil. Voyez où se trouve maintenant le fichier, ou téléchargez-le à nouveau.</translation>
    </message>
    <message id="bramd-install-refused">
        <source>The file was not accepted. See whether apps may be installed on this device and there is enough storage space, then try again.</source>
        <extracomment>Body of the notice that an app file was not taken for installation.</extracomment>
        <translation>Le fichier n’a pas été accepté. Vérifiez que l’installation d’applications est autorisée sur cet appareil et que l’espace de stockage suffit, puis réessayez.</translation>
    </message>
    <message id="bramd-install-no-runtime">
        <source>Android is not installed on this device. Install it first, then open the file again.</source>
        <extracomment>Body of the notice that an app file was not taken because there is no Android runtime.</extracomment>
        <translation>Android n’est pas installé sur cet appareil. Installez-le d’abord, puis ouvrez à nouveau le fichier.</translation>
    </message>
    <message id="bramd-install-unavailable">
        <source>Apps cannot be installed at the moment. Restart the device, then try again.</source>
        <extracomment>Body of the notice that an app file could not be handed over for installation.</extracomment>
        <translation>Il n’est pas possible d’installer des applications pour le moment. Redémarrez l’appareil, puis réessayez.</translation>
    </message>
</context>
</TS>
