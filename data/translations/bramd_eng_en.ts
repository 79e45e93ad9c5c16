<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name></name>
    <message id="bramd-ap-name">
        <source>Android apps</source>
        <extracomment>Application name of the notices about installed and removed apps.</extracomment>
        <translation>Android apps</translation>
    </message>
    <message id="bramd-install-success">
        <source>App installed</source>
        <extracomment>Title of a notice; followed by a colon and the app's name when it is known.</extracomment>
        <translation>App installed</translation>
    </message>
    <message id="bramd-install-failed">
        <source>App could not be installed</source>
        <extracomment>Title of a notice; followed by a colon and the app's name when it is known.</extracomment>
        <translation>App could not be installed</translation>
    </message>
    <message id="bramd-uninstall-success">
        <source>App removed</source>
        <extracomment>Title of a notice; followed by a colon and the package name when it is known.</extracomment>
        <translation>App removed</translation>
    </message>
    <message id="bramd-uninstall-failed">
        <source>App could not be removed</source>
        <extracomment>Title of a notice; followed by a colon and the package name when it is known.</extracomment>
        <translation>App could not be removed</translation>
    </message>
    <message id="bramd-app_installation_disallowed">
        <source>Installing apps is not allowed on this device. Ask the person who manages it to allow it.</source>
        <extracomment>Body of the warning that an installation was refused because of the device policy.</extracomment>
        <translation>Installing apps is not allowed on this device. Ask the person who manages it to allow it.</translation>
    </message>
    <message id="bramd-app_uninstallation_disallowed">
        <source>Removing apps is not allowed on this device. Ask the person who manages it to allow it.</source>
        <extracomment>Body of the warning that a removal was refused because of the device policy.</extracomment>
        <translation>Removing apps is not allowed on this device. Ask the person who manages it to allow it.</translation>
    </message>
    <message id="bramd-launch_umbra_to_start_android_app">
        <source>Android is starting. %1 will open in a moment.</source>
        <extracomment>Body of the notice shown while the Android runtime starts up; %1 is the app's name.</extracomment>
        <translation>Android is starting. %1 will open in a moment.</translation>
    </message>
    <message id="Aborted">
        <source>The installation was cancelled. Start it again if you want the app.</source>
        <extracomment>Why an installation failed: it was cancelled or not confirmed.</extracomment>
        <translation>The installation was cancelled. Start it again if you want the app.</translation>
    </message>
    <message id="bramd-install-fail-incompat">
        <source>The app does not support this device or its Android version. Look for a version of the app that does.</source>
        <extracomment>Why an installation failed: the app needs another Android release, processor or feature.</extracomment>
        <translation>The app does not support this device or its Android version. Look for a version of the app that does.</translation>
    </message>
    <message id="bramd-install-fail-conflict">
        <source>The app conflicts with one that is already installed, such as a newer or differently signed version. Remove that app first, then try again.</source>
        <extracomment>Why an installation failed: it clashes with what is installed already.</extracomment>
        <translation>The app conflicts with one that is already installed, such as a newer or differently signed version. Remove that app first, then try again.</translation>
    </message>
    <message id="bramd-install-fail-invalid">
        <source>The app file is damaged or is not an Android app. Download it again, then try again.</source>
        <extracomment>Why an installation failed: the file is damaged, unsigned or not an app at all.</extracomment>
        <translation>The app file is damaged or is not an Android app. Download it again, then try again.</translation>
    </message>
    <message id="bramd-install-fail-storage">
        <source>There is not enough storage space, or the storage is not available. Free up some space, then try again.</source>
        <extracomment>Why an installation failed: no space, or the storage cannot be used.</extracomment>
        <translation>There is not enough storage space, or the storage is not available. Free up some space, then try again.</translation>
    </message>
    <message id="bramd-install-fail-other">
        <source>Android could not install the app. Restart the device, then try again.</source>
        <extracomment>Why an installation failed: any other reason.</extracomment>
        <translation>Android could not install the app. Restart the device, then try again.</translation>
    </message>
    <message id="bramd-installing">
        <source>Installing app</source>
        <extracomment>Title of a notice; followed by a colon and the name of the file.</extracomment>
        <translation>Installing app</translation>
    </message>
    <message id="bramd-install-no-file">
        <source>This is no app file on the device that can be used. Look where the file is now, or download it again.</source>
        <extracomment>Body of the notice that an app file that was opened is not there, is a directory, a web address or no app, or cannot be read.</extracomment>
        <translation>This is no app file on the device that can be used. Look where the file is now, or download it again.</translation>
    </message>
    <message id="bramd-install-refused">
        <source>The file was not accepted. See whether apps may be installed on this device and there is enough storage space, then try again.</source>
        <extracomment>Body of the notice that an app file was not taken for installation.</extracomment>
        <translation>The file was not accepted. See whether apps may be installed on this device and there is enough storage space, then try again.</translation>
    </message>
    <message id="bramd-install-no-runtime">
        <source>Android is not installed on this device. Install it first, then open the file again.</source>
        <extracomment>Body of the notice that an app file was not taken because there is no Android runtime.</extracomment>
        <translation>Android is not installed on this device. Install it first, then open the file again.</translation>
    </message>
    <message id="bramd-install-unavailable">
        <source>Apps cannot be installed at the moment. Restart the device, then try again.</source>
        <extracomment>Body of the notice that an app file could not be handed over for installation.</extracomment>
        <translation>Apps cannot be installed at the moment. Restart the device, then try again.</translation>
    </message>
</context>
</TS>
