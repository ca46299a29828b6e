#!/usr/bin/env python3
"""sbom.py IDENTITY FOLDER   lists what the files of a release in FOLDER consist of, as SPDX 2.3

Writes FOLDER/quarn-VERSION.spdx.json. The facts come from the files themselves: the libraries that the programs in them
name, and the Debian packages of this system that those libraries belong to. What is linked into a program cannot be
seen in it; the builds in build/portable and build/windows of this folder say it. The same files give the same list.
"""

import hashlib
import json
import pathlib
import re
import subprocess
import sys
import tarfile
import tempfile
import zipfile

from release_identity import Identity

QT_PACKAGE = "qt6-base-dev"

# What a Windows program is made with: the name in the list, and the Debian package that it comes from.
WINDOWS_PARTS = [
    ("Qt", QT_PACKAGE),
    ("GCC run-time libraries", "g++-mingw-w64-x86-64-posix"),
    ("MinGW-w64", "mingw-w64-common"),
]

# What the installer and the uninstaller are, beside the files that they install.
INSTALLER_PART = ("NSIS", "nsis-common")

# How the programs that are one file were linked.
PORTABLE_BUILD, WINDOWS_BUILD = (pathlib.Path("build", each, "build.ninja") for each in ("portable", "windows"))


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def sha256(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def is_elf(path):
    return path.is_file() and not path.is_symlink() and path.open("rb").read(4) == b"\x7fELF"


def needed_by(program):
    """The file names of the libraries that a program asks for itself."""
    return re.findall(r"\(NEEDED\).*\[(.*)\]", output_of("readelf", "--dynamic", "--wide", str(program)))


def place_of(library):
    """Where the system's loader finds a library."""
    for line in output_of("/sbin/ldconfig", "-p").splitlines():
        parts = line.split()
        if parts and parts[0] == library and "x86-64" in line:
            return parts[-1]
    return None


def package_with(pattern):
    """The installed Debian package that has such a file; None if there is none."""
    found = subprocess.run(["dpkg", "--search", pattern], capture_output=True, text=True, check=False)
    for line in found.stdout.splitlines():
        if not line.startswith("diversion "):
            return line.split(": ")[0].split(",")[0]
    return None


def package_of_library(library):
    """The loader's paths may begin with /lib where the package has /usr/lib, and the other way round."""
    place = place_of(library)
    return place and (package_with(place) or package_with(str(pathlib.Path(place).resolve())) or
                      package_with("/usr" + place) or package_with(place.removeprefix("/usr")))


class Bill:
    """The list under construction. Every package is in it once."""

    def __init__(self, identity):
        self.identity = identity
        self.packages = {}
        self.relationships = []

    def relate(self, whole, kind, part):
        entry = {"spdxElementId": whole, "relationshipType": kind, "relatedSpdxElement": part}
        if entry not in self.relationships:
            self.relationships.append(entry)

    def add_file(self, path):
        """A file of the release itself."""
        identifier = "SPDXRef-File-" + re.sub(r"[^A-Za-z0-9.-]", "-", path.name)
        self.packages[identifier] = {
            "SPDXID": identifier,
            "name": path.name,
            "versionInfo": self.identity.version,
            "packageFileName": path.name,
            "supplier": f"Organization: {self.identity.maker}",
            "downloadLocation": f"{self.identity.downloads}/{path.name}",
            "filesAnalyzed": False,
            "checksums": [{"algorithm": "SHA256", "checksumValue": sha256(path)}],
            "homepage": self.identity.web_page,
            "licenseConcluded": "MIT",
            "licenseDeclared": "MIT",
            "copyrightText": f"Copyright (c) {self.identity.build_date[:4]} {self.identity.maker}",
        }
        self.relate("SPDXRef-DOCUMENT", "DESCRIBES", identifier)
        return identifier

    def add_part(self, name, package):
        """A part that comes from a Debian package of this system; or one that no package has."""
        identifier = "SPDXRef-Part-" + re.sub(r"[^A-Za-z0-9.-]", "-", name)
        if identifier in self.packages:
            return identifier
        entry = {
            "SPDXID": identifier,
            "name": name,
            "downloadLocation": "NOASSERTION",
            "filesAnalyzed": False,
            "licenseConcluded": "NOASSERTION",
            "licenseDeclared": "NOASSERTION",
            "copyrightText": "NOASSERTION",
        }
        if package:
            fields = "${Version} ${source:Package} ${source:Version} ${Architecture}"
            version, source, source_version, machine = output_of("dpkg-query", "-W", "-f", fields, package).split()
            plain = package.split(":")[0]
            entry["versionInfo"] = version
            entry["supplier"] = "Organization: Debian"
            entry["sourceInfo"] = f"built from Debian's source package {source} {source_version}"
            entry["licenseComments"] = f"The licences are in /usr/share/doc/{plain}/copyright of this package."
            entry["externalRefs"] = [{
                "referenceCategory": "PACKAGE-MANAGER",
                "referenceType": "purl",
                "referenceLocator": f"pkg:deb/debian/{plain}@{version}?arch={machine}".replace("+", "%2B"),
            }]
        self.packages[identifier] = entry
        return identifier

    def add_linked(self, whole, folder):
        """What the programs and libraries in a folder are linked with: inside it, or expected on the system."""
        programs = [path for path in sorted(folder.rglob("*")) if is_elf(path)]
        if not programs:
            raise SystemExit(f"sbom.py: there is no program in {whole}")
        inside = {path.name for path in folder.rglob("*")}
        for library in sorted(path for path in programs if ".so" in path.name):
            package = package_with("*/" + library.name)
            self.relate(whole, "CONTAINS", self.add_part(package.split(":")[0] if package else library.name, package))
        for library in sorted({name for program in programs for name in needed_by(program)} - inside):
            package = package_of_library(library)
            self.relate(whole, "DYNAMIC_LINK", self.add_part(package.split(":")[0] if package else library, package))

    def add_linked_in(self, whole, folder):
        """What is inside the portable programs: Qt and the C++ library unless they ask for them, and the archives."""
        needed = {name for path in folder.rglob("*") if is_elf(path) for name in needed_by(path)}
        packages = []
        if not any(name.startswith("libQt6Core.") for name in needed):
            self.relate(whole, "STATIC_LINK", self.add_part("Qt", QT_PACKAGE))
            self.add_bundled_with_qt(whole, PORTABLE_BUILD)
        if not any(name.startswith("libstdc++.") for name in needed):
            packages.append(package_with(output_of("g++", "-print-file-name=libstdc++.a").strip()))
        if PORTABLE_BUILD.is_file():
            archives = set(re.findall(r"/usr/lib/[^\s:$]+\.a(?=\s|$)", PORTABLE_BUILD.read_text(encoding="utf-8")))
            packages += [package_with(archive) for archive in sorted(archives)]
        for package in sorted(set(filter(None, packages))):
            self.relate(whole, "STATIC_LINK", self.add_part(package.split(":")[0], package))

    def add_bundled_with_qt(self, whole, build):
        """Qt's own copies of other libraries, which are linked in with it. Several licences meet in such a file."""
        self.packages[whole]["licenseConcluded"] = "NOASSERTION"
        self.packages[whole]["licenseComments"] = ("Quarn is under the MIT licence. The licences of the parts inside "
                                                   "are in the folder licences of this package.")
        if not build.is_file():
            return
        for name in sorted(set(re.findall(r"libQt6Bundled(\w+)\.a", build.read_text(encoding="utf-8")))):
            identifier = self.add_part(f"{name}, Qt's copy", None)
            source = output_of("dpkg-query", "-W", "-f", "${source:Package} ${source:Version}", QT_PACKAGE)
            self.packages[identifier]["sourceInfo"] = f"part of Debian's source package {source}"
            self.relate(whole, "STATIC_LINK", identifier)

    def document(self):
        identity = self.identity
        files = "".join(package["checksums"][0]["checksumValue"]
                        for package in self.packages.values() if "checksums" in package)
        return {
            "spdxVersion": "SPDX-2.3",
            "dataLicense": "CC0-1.0",
            "SPDXID": "SPDXRef-DOCUMENT",
            "name": f"{identity.name}-{identity.version}",
            "documentNamespace": f"{identity.downloads}/spdx/{hashlib.sha256(files.encode()).hexdigest()}",
            "creationInfo": {
                "created": f"{identity.build_date}T00:00:00Z",
                "creators": [f"Organization: {identity.maker}", "Tool: scripts/release"],
            },
            "packages": list(self.packages.values()),
            "relationships": self.relationships,
        }


def describe(bill, path):
    whole = bill.add_file(path)
    with tempfile.TemporaryDirectory() as place:
        if path.name.endswith(".deb"):
            output_of("dpkg-deb", "--extract", str(path), place)
            bill.add_linked(whole, pathlib.Path(place))
        elif path.name.endswith("-linux.tar.gz"):
            with tarfile.open(path) as archive:
                archive.extractall(place)
            bill.add_linked(whole, pathlib.Path(place))
            bill.add_linked_in(whole, pathlib.Path(place))
        elif path.name.endswith(("-windows.zip", "-setup.exe")):
            # The installer has the files of the archive. Libraries beside the programs are files, others are linked in.
            archive = path.with_name(bill.identity.file("windows.zip"))
            names = zipfile.ZipFile(archive).namelist() if archive.is_file() else []
            beside = any(name.endswith(".dll") for name in names)
            for name, package in WINDOWS_PARTS:
                bill.relate(whole, "CONTAINS" if beside else "STATIC_LINK", bill.add_part(name, package))
            bill.add_bundled_with_qt(whole, WINDOWS_BUILD)
            if path.name.endswith("-setup.exe"):
                bill.relate(whole, "CONTAINS", bill.add_part(*INSTALLER_PART))


def main(arguments):
    if len(arguments) != 2:
        raise SystemExit("usage: sbom.py IDENTITY FOLDER")
    bill = Bill(Identity(arguments[0]))
    folder = pathlib.Path(arguments[1])
    for path in sorted(folder.iterdir()):
        if path.name.endswith((".deb", ".tar.gz", ".zip", ".exe")):
            describe(bill, path)
    if not bill.packages:
        raise SystemExit(f"sbom.py: {folder} has no file of a release")
    text = json.dumps(bill.document(), indent=2, ensure_ascii=False) + "\n"
    (folder / bill.identity.file(".spdx.json")).write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main(sys.argv[1:])
