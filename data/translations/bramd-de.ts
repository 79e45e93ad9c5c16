<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name></name>
    <message id="bramd-ap-name">
        <source>Android apps</source>
        <extracomment>Application name of the notices about installed and removed apps.</extracomment>
        <translation>Android-Apps</translation>
    </message>
    <message id="bramd-install-success">
        <source>App installed</source>
        <extracomment>Title of a notice; followed by a colon and the app's name when it is known.</extracomment>
        <translation>App installiert</translation>
    </message>
    <message id="bramd-install-failed">
        <source>App could not be installed</source>
        <extracomment>Title of a notice; followed by a colon and the app's name when it is known.</extracomment>
        <translation>App konnte nicht installiert werden</translation>
    </message>
    <message id="bramd-uninstall-success">
        <source>App removed</source>
        <extracomment>Title of a notice; followed by a colon and the package name when it is known.</extracomment>
        <translation>App entfernt</translation>
    </message>
    <message id="bramd-uninstall-failed">
        <source>App could not be removed</source>
        <extracomment>Title of a notice; followed by a colon and the package name when it is known.</extracomment>
        <translation>App konnte nicht entfernt werden</translation>
    </message>
    <message id="bramd-app_installation_disallowed">
        <source>Installing apps is not allowed on this device. Ask the person who manages it to allow it.</source>
        <extracomment>Body of the warning that an installation was refused because of the device policy.</extracomment>
        <translation>Auf diesem Gerät dürfen keine Apps installiert werden. Bitte die Person, die es verwaltet, um Erlaubnis.</translation>
    </message>
    <message id="bramd-app_uninstallation_disallowed">
        <source>Removing apps is not allowed on this device. Ask the person who manages it to allow it.</source>
        <extracomment>Body of the warning that a removal was refused because of the device policy.</extracomment>
        <translation>Auf diesem Gerät dürfen keine Apps entfernt werden. Bitte die Person, die es verwaltet, um Erlaubnis.</translation>
    </message>
    <message id="bramd-launch_umbra_to_start_android_app">
        <source>Android is starting. %1 will open in a moment.</source>
        <extracomment>Body of the notice shown while the Android runtime starts up; %1 is the app's name.</extracomment>
        <translation>Android wird gestartet. %1 öffnet sich gleich.</translation>
    </message>
    <message id="Aborted">
        <source>The installation was cancelled. Start it again if you want the app.</source>
        <extracomment>Why an installation failed: it was cancelled or not confirmed.</extracomment>
        <translation>Die Installation wurde abgebrochen. Starte sie erneut, wenn du die App möchtest.</translation>
    </message>
    <message id="bramd-install-fail-incompat">
        <source>The app does not support this device or its Android version. Look for a version of the app that does.</source>
        <extracomment>Why an installation failed: the app needs another Android release, processor or feature.</extracomment>
        <translation>Die App unterstützt dieses Gerät oder seine Android-Version nicht. Suche nach einer passenden Version der App.</translation>
    </message>
    <message id="bramd-install-fail-conflict">
        <source>The app conflicts with one that is already installed, such as a newer or differently signed version. Remove that app first, then try again.</source>
        <extracomment>Why an installation failed: it clashes with what is installed already.</extracomment>
        <translation>Die App verträgt sich nicht mit einer bereits installierten, zum Beispiel einer neueren oder anders signierten Version. Entferne zuerst diese App und versuche es dann erneut.</translation>
    </message>
    <message id="bramd-install-fail-invalid">
        <source>The app file is damaged or is not an Android app. Download it again, then try again.</source>
        <extracomment>Why an installation failed: the file is damaged, unsigned or not an app at all.</extracomment>
        <translation>Die App-Datei ist beschädigt oder keine Android-App. Lade sie erneut herunter und versuche es dann noch einmal.</translation>
    </message>
    <message id="bramd-install-fail-storage">
        <source>There is not enough storage space, or the storage is not available. Free up some space, then try again.</source>
        <extracomment>Why an installation failed: no space, or the storage cannot be used.</extracomment>
        <translation>Der Speicherplatz reicht nicht aus oder der Speicher ist nicht verfügbar. Gib Speicherplatz frei und versuche es dann erneut.</translation>
    </message>
    <message id="bramd-install-fail-other">
        <source>Android could not install the app. Restart the device, then try again.</source>
        <extracomment>Why an installation failed: any other reason.</extracomment>
        <translation>Android konnte die App nicht installieren. Starte das Gerät neu und versuche es dann erneut.</translation>
    </message>
    <message id="bramd-installing">
        <source>Installing app</source>
        <extracomment>Title of a notice; followed by a colon and the name of the file.</extracomment>
        <translation>App wird installiert</translation>
    </message>
    <message id="bramd-install-no-file">
        <source>This is no app file on the device that can be used. Look where the file is now, or download it again.</source>
        <extracomment>Body of the notice that an app file that was opened is not there, is a directory, a web address or no app, or cannot be read.</extracomment>
        <translation>Das ist keine App-Datei auf diesem Gerät, die sich verwenden lässt. Sieh nach, wo die Datei jetzt ist, oder lade sie noch einmal herunter.</translation>
    </message>
    <message id="bramd-install-refused">
        <source>The file was not accepted. See whether apps may be installed on this device and there is enough storage space, then try again.</source>
        <extracomment>Body of the notice that an app file was not taken for installation.</extracomment>
        <translation>Die Datei wurde nicht angenommen. Prüfe, ob auf diesem Gerät Apps installiert werden dürfen und genug Speicherplatz frei ist, und versuche es dann erneut.</translation>
    </message>
    <message id="bramd-install-no-runtime">
        <source>Android is not installed on this device. Install it first, then open the file again.</source>
        <extracomment>Body of the notice that an app file was not taken because there is no Android runtime.</extracomment>
        <translation>Android ist auf diesem Gerät nicht installiert. Installiere es zuerst und öffne die Datei dann erneut.</translation>
    </message>
    <message id="bramd-install-unavailable">
        <source>Apps cannot be installed at the moment. Restart the device, then try again.</source>
        <extracomment>Body of the notice that an app file could not be handed over for installation.</extracomment>
        <translation>Zurzeit können keine Apps installiert werden. Starte das Gerät neu und versuche es dann erneut.</translation>
    </message>
</context>
</TS>
