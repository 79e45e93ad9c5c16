"""bramctl opens apps, and whatever else an intent opens."""

from phone.waiting import wait_for

from bramctl import REFUSED, bramctl
from hostfiles import APPLICATIONS, DOWNLOADS, home_file
from launches import HOME_VOLUME, WEATHER, launched_packages, start_with_weather, started_intents


def test_an_app_is_launched(phone):
    start_with_weather(phone)
    bramctl("launch", WEATHER).done("bramd has taken it", "Weather is to open")
    assert launched_packages(phone) == [WEATHER]


def test_a_launcher_of_an_app_is_launched(phone):
    start_with_weather(phone)
    bramctl("launch", f"{WEATHER}/{WEATHER}.MainActivity").done()
    intent = started_intents(phone)[0]
    assert intent["action"] == "android.intent.action.MAIN"
    assert intent["componentClass"] == f"{WEATHER}.MainActivity"
    bramctl("launch", f"{WEATHER}/{WEATHER}.Other").failed(
        REFUSED, f"has no launcher {WEATHER}.Other but: {WEATHER}.MainActivity")


def test_an_app_that_is_not_there_is_not_launched(phone):
    start_with_weather(phone)
    bramctl("launch", "org.example.nothing").failed(REFUSED, "bramctl list")
    assert not launched_packages(phone)


def test_of_an_app_without_launchers_none_is_launched(phone):
    phone.start_daemon()
    (APPLICATIONS / "bramd_handler_a_b-a_b_C.desktop").write_text(
        "[Desktop Entry]\nX-bramd-packageName=a.b\nNoDisplay=true\n", encoding="utf-8")
    bramctl("launch", "a.b/a.b.C").failed(REFUSED, "a.b has no launchers", "bramctl targets")


def test_an_intent_for_an_app_that_the_host_does_not_know_is_remarked(phone):
    start_with_weather(phone)
    phone.runtime.hold("SurfaceFlinger")  # nobody waits for windows
    bramctl("intent", "--package", "org.example.typo").done("The host knows no app org.example.typo")
    assert "knows no app" not in bramctl("intent", "--package", WEATHER).done().out
    assert "knows no app" not in bramctl("intent", "--action", "a").done().out


def test_an_intent_carries_what_was_given(phone):
    start_with_weather(phone)
    home_file("a.pdf")
    bramctl("intent", "--action", "android.intent.action.VIEW", "--data=../Downloads/a.pdf",
            "--type", "application/pdf", "--package", WEATHER, "--class", f"{WEATHER}.View",
            "--category", "android.intent.category.DEFAULT", "--extra", "title=a=b",
            "--extra-int", "page=-3", "--extra-bool", "night=true", cwd=DOWNLOADS).done()
    assert started_intents(phone) == [{
        "action": "android.intent.action.VIEW", "data": f"file://{HOME_VOLUME}/Downloads/a.pdf",
        "type": "application/pdf", "package": WEATHER, "componentPackage": WEATHER,
        "componentClass": f"{WEATHER}.View",
        "categories": ["android.intent.category.DEFAULT"],
        "extras": {"title": "a=b", "page": -3, "night": True}}]


def test_a_file_that_is_not_there_is_not_sent(phone):
    phone.start_daemon()
    bramctl("intent", "--data", "none.pdf", cwd=DOWNLOADS).failed(
        REFUSED, f"There is no file “{DOWNLOADS}/none.pdf”.")
    assert phone.unit.state() == "inactive"


def test_settings_and_licenses_are_opened(phone):
    start_with_weather(phone)
    # Their window is there already, so that the daemon need not wait for it.
    bramctl("intent", "--package", "com.android.settings", "--class", ".Settings").done()
    bramctl("open-settings", WEATHER).done("the settings of")
    bramctl("licenses").done("legal information")
    wait_for(lambda: len(started_intents(phone)) == 3, "the intents")
    _, settings, legal = started_intents(phone)
    assert settings["action"] == "android.settings.APPLICATION_DETAILS_SETTINGS"
    assert settings["data"] == f"package:{WEATHER}"
    assert legal["action"] == "android.settings.LEGAL_INFO"
