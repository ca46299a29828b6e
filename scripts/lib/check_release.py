#!/usr/bin/env python3
"""check_release.py GENERATED FOLDER   whether the files of a release in FOLDER fit each other and the identity

GENERATED is the folder of the build with the filled-in files. Prints each objection; the exit status is 1 if there is
one. The network is not used.
"""

import hashlib
import json
import pathlib
import re
import sys
import tarfile
import zipfile

import yaml

from release_identity import Identity

# What SPDX 2.3 demands of a document and of each package in it.
DOCUMENT_FIELDS = ("spdxVersion", "dataLicense", "SPDXID", "name", "documentNamespace", "creationInfo", "packages",
                   "relationships")
PACKAGE_FIELDS = ("SPDXID", "name", "downloadLocation")
RELATIONSHIPS = {"DESCRIBES", "CONTAINS", "DYNAMIC_LINK", "STATIC_LINK"}


def installer_exit_codes():
    """Those that its source gives in a silent run, and that of NSIS itself for a full disk."""
    source = pathlib.Path("packaging/windows/quarn.nsi").read_text(encoding="utf-8")
    return sorted({2} | {int(code) for code in re.findall(r"!insertmacro EndWith (\d+)", source)})


class Check:
    """The folder, what it should say, and the objections so far."""

    def __init__(self, generated, folder):
        self.generated = pathlib.Path(generated)
        self.identity = Identity(self.generated / "identity.nsh")
        self.folder = pathlib.Path(folder)
        self.objections = []

    def that(self, condition, objection):
        if not condition:
            self.objections.append(objection)
        return condition

    def same(self, what, found, expected):
        self.that(found == expected, f"{what} is {found!r} and should be {expected!r}")

    def sum_of(self, name):
        return hashlib.sha256((self.folder / name).read_bytes()).hexdigest()

    def has(self, name):
        return (self.folder / name).is_file()

    # --- The files -------------------------------------------------------------------------------------------------

    def checksums(self):
        lines = (self.folder / "SHA256SUMS").read_text(encoding="utf-8").splitlines()
        listed = [line.split("  ", 1)[1] for line in lines]
        present = sorted(str(path.relative_to(self.folder)) for path in self.folder.rglob("*") if path.is_file())
        present = [name for name in present if name not in ("SHA256SUMS", "SHA256SUMS.asc")]
        self.same("the list of files in SHA256SUMS", listed, present)
        for name in present:
            self.that("/" in name or name == "LICENSE.txt" or
                      re.match(rf"{self.identity.name.lower()}[-_]{re.escape(self.identity.version)}[-.]", name),
                      f"{name} is no name of a file of this release")
        for line in lines:
            expected, name = line.split("  ", 1)
            if self.has(name):
                self.same(f"the sum of {name}", self.sum_of(name), expected)

    def licences(self):
        self.that(self.has("LICENSE.txt"), "there is no LICENSE.txt")
        for archive in (self.identity.file("windows.zip"), self.identity.file("x86_64-linux.tar.gz")):
            if not self.has(archive):
                continue
            if archive.endswith(".zip"):
                names = zipfile.ZipFile(self.folder / archive).namelist()
            else:
                with tarfile.open(self.folder / archive) as opened:
                    names = opened.getnames()
            texts = ["Quarn.txt", "Qt.txt", "LGPL-3.txt", "GPL-3.txt", "GCC.txt"]
            if archive.endswith(".zip"):
                # Of the installer, which has the files of this archive.
                texts.append("NSIS.txt")
            for text in texts:
                self.that(any(name.endswith(f"/licences/{text}") for name in names), f"{archive} lacks the licence {text}")

    def pictures(self):
        """Software centres fetch them from where the release is."""
        for metadata in self.generated.glob("linux/*.metainfo.xml"):
            pictures = re.findall(r"<image[^>]*>([^<]*)</image>", metadata.read_text(encoding="utf-8"))
            self.that(pictures, "the metadata show no picture")
            for address in pictures:
                name = address.removeprefix(self.identity.downloads + "/")
                self.that(self.has(name), f"the metadata show {address}, which is no file of the release")

    # --- The list of parts -----------------------------------------------------------------------------------------
    #
    # Debian 12 has no tool that validates a whole list of SPDX, only some that know its names of licences. These are the
    # demands of the format that concern us.

    def bill(self):
        name = self.identity.file(".spdx.json")
        if not self.that(self.has(name), f"there is no {name}"):
            return
        document = json.loads((self.folder / name).read_text(encoding="utf-8"))
        missing = [field for field in DOCUMENT_FIELDS if not document.get(field)]
        if not self.that(not missing, f"{name} lacks {', '.join(missing)}"):
            return
        self.same("the version of SPDX", document["spdxVersion"], "SPDX-2.3")
        self.same("the licence of the list", document["dataLicense"], "CC0-1.0")
        self.same("the identifier of the list", document["SPDXID"], "SPDXRef-DOCUMENT")
        self.same("the time of the list", document["creationInfo"].get("created"),
                  f"{self.identity.build_date}T00:00:00Z")
        self.that(all(re.match(r"(Organization|Person|Tool): \S", each)
                      for each in document["creationInfo"].get("creators", [""])), "the list has no creator")
        self.that(re.match(r"https://[^#]+$", document["documentNamespace"]), "the list's name space is no address")
        self.bill_packages(document)
        self.bill_relationships(document)

    def bill_packages(self, document):
        seen = set()
        for package in document["packages"]:
            what = f"the part {package.get('name')}"
            for field in PACKAGE_FIELDS:
                self.that(package.get(field), f"{what} lacks {field}")
            identifier = package.get("SPDXID", "")
            self.that(re.fullmatch(r"SPDXRef-[A-Za-z0-9.-]+", identifier), f"{what} has the identifier {identifier}")
            self.that(identifier not in seen, f"two parts have the identifier {identifier}")
            seen.add(identifier)
            for checksum in package.get("checksums", []):
                if self.that(self.has(package["packageFileName"]), f"{what} is no file of the release"):
                    self.same(f"the sum of {what}", checksum["checksumValue"], self.sum_of(package["packageFileName"]))
            for reference in package.get("externalRefs", []):
                self.that(re.fullmatch(r"pkg:deb/debian/[^@+]+@[^+]+\?arch=\w+", reference["referenceLocator"]),
                          f"{what} has the reference {reference['referenceLocator']}")

    def bill_relationships(self, document):
        if self.has(self.identity.file("setup.exe")):
            wanted = {"relationshipType": "CONTAINS", "relatedSpdxElement": "SPDXRef-Part-NSIS",
                      "spdxElementId": f"SPDXRef-File-{self.identity.file('setup.exe')}"}
            self.that(wanted in document["relationships"], "the installer's own run-time is not in the list of parts")
        known = {package.get("SPDXID") for package in document["packages"]} | {"SPDXRef-DOCUMENT"}
        named = set()
        for each in document["relationships"]:
            self.that(each["relationshipType"] in RELATIONSHIPS, f"{each['relationshipType']} is no relationship")
            for end in (each["spdxElementId"], each["relatedSpdxElement"]):
                self.that(end in known, f"a relationship names {end}, which is no part")
                named.add(end)
        self.that(named == known, f"nothing is said of {', '.join(sorted(map(str, known - named)))}")
        described = {package.get("packageFileName") for package in document["packages"]} - {None}
        files = {path.name for path in self.folder.iterdir() if path.name.endswith((".deb", ".tar.gz", ".zip", ".exe"))}
        self.same("the list's own files", sorted(described), sorted(files))

    # --- The manifests ---------------------------------------------------------------------------------------------

    def manifest(self, name, needed):
        """A manifest's content; None if the file that it is for is not part of this release."""
        path = self.folder / "manifests" / name
        if not self.has(needed):
            self.that(not path.exists(), f"there is {name}, but no {needed}")
            return None
        if not self.that(path.is_file(), f"there is {needed}, but no {name}"):
            return None
        text = path.read_text(encoding="utf-8")
        self.that("@" not in text, f"{name} has an open place")
        self.that(not re.search(r"/(home|root|work|tmp|usr|build)/", text), f"{name} names a folder of this system")
        home = self.identity.web_page.rsplit("/", 1)[0]
        for address in re.findall(r"\w+://[^\s\"']+", text):
            self.that(address == home or address.startswith(self.identity.web_page),
                      f"{name} names the address {address}")
        return json.loads(text) if name.endswith(".json") else yaml.safe_load(text)

    def fields(self, name, content, expected):
        for field, value in expected.items():
            self.same(f"{field} in {name}", content.get(field), value)

    def address(self, file):
        return f"{self.identity.downloads}/{file}"

    def winget(self):
        identity = self.identity
        setup = identity.file("setup.exe")
        package = f"{identity.maker}.{identity.name}"
        common = {"PackageIdentifier": package, "PackageVersion": identity.version, "ManifestVersion": "1.6.0"}
        expected = {
            f"winget/{package}.yaml": {"ManifestType": "version", "DefaultLocale": "en-US"},
            f"winget/{package}.installer.yaml": {"ManifestType": "installer", "InstallerType": "nullsoft",
                                                 "Scope": "user", "ProductCode": identity.name,
                                                 "ReleaseDate": identity.build_date},
            f"winget/{package}.locale.en-US.yaml": {"ManifestType": "defaultLocale", "PackageLocale": "en-US",
                                                    "Publisher": identity.maker, "PackageName": identity.name,
                                                    "License": "MIT", "PackageUrl": identity.web_page},
        }
        for name, values in expected.items():
            content = self.manifest(name, setup)
            if content is None:
                continue
            self.fields(name, content, common | values)
            self.that(all(isinstance(content[field], str) for field in common), f"a version in {name} is a number")
            if name.endswith("installer.yaml"):
                self.same("the installers", content.get("Installers"),
                          [{"Architecture": "x64", "InstallerUrl": self.address(setup),
                            "InstallerSha256": self.sum_of(setup).upper()}])
                self.same("the installer's exit codes",
                          [each["InstallerReturnCode"] for each in content.get("ExpectedReturnCodes", [])],
                          installer_exit_codes())
            if name.endswith("en-US.yaml"):
                self.that(3 <= len(content.get("ShortDescription", "")) <= 256, "the short description is too long")
                self.that(len(content.get("Tags", [])) <= 16, "there are too many tags")

    def scoop(self):
        identity = self.identity
        archive = identity.file("windows.zip")
        content = self.manifest("scoop/quarn.json", archive)
        if content is None:
            return
        self.fields("quarn.json", content, {
            "version": identity.version, "homepage": identity.web_page, "license": "MIT",
            "extract_dir": identity.name,
            "architecture": {"64bit": {"url": self.address(archive), "hash": self.sum_of(archive)}}})
        names = zipfile.ZipFile(self.folder / archive).namelist()
        programs = [each if isinstance(each, str) else each[0] for each in content["bin"] + content["shortcuts"]]
        for program in ("quarn.com", "quarn.exe", "quarn-send.exe"):
            self.that(program in programs, f"quarn.json does not offer {program}")
        for program in programs:
            self.that(f"{identity.name}/{program}" in names, f"{archive} has no {program}")

    def flatpak(self):
        source = self.identity.file("source.tar.gz")
        for template in self.generated.glob("manifests/flatpak/*.yaml"):
            content = self.manifest(f"flatpak/{template.name}", source)
            if content is None:
                continue
            self.fields(template.name, content, {
                "app-id": template.stem, "runtime": "org.kde.Platform", "sdk": "org.kde.Sdk",
                "command": self.identity.name.lower()})
            self.that(isinstance(content.get("runtime-version"), str), "the version of the runtime is a number")
            needed = {"--device=all", "--socket=x11", "--socket=wayland", "--share=ipc"}
            self.that(needed <= set(content.get("finish-args", [])), f"{template.name} lacks a permission")
            self.same("the source", content["modules"][0]["sources"],
                      [{"type": "archive", "url": self.address(source), "sha256": self.sum_of(source)}])


def main(arguments):
    if len(arguments) != 2:
        raise SystemExit("usage: check_release.py GENERATED FOLDER")
    check = Check(*arguments)
    for part in (check.checksums, check.licences, check.pictures, check.bill, check.winget, check.scoop, check.flatpak):
        part()
    for objection in check.objections:
        print(objection)
    raise SystemExit(1 if check.objections else 0)


if __name__ == "__main__":
    main(sys.argv[1:])
