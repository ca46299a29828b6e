"""The identity of a release, as the build filled it in, and the names of its files."""

import re


class Identity:
    """name, maker, version, web_page, build_date and downloads, from the file with the definitions."""

    def __init__(self, path):
        with open(path, encoding="utf-8") as file:
            values = dict(re.findall(r'^!define (\w+) "(.*)"$', file.read(), re.M))
        self.name = values["NAME"]
        self.maker = values["MAKER"]
        self.version = values["VERSION"]
        self.web_page = values["WEB_PAGE"]
        self.build_date = values["BUILD_DATE"]
        self.downloads = values["DOWNLOADS"]

    def file(self, kind):
        """The name of a release's file, such as file("setup.exe")."""
        return f"{self.name.lower()}-{self.version}{'' if kind.startswith('.') else '-'}{kind}"
