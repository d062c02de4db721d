"""Parts of scripts/package: the list of parts, zip files and the source of the MSI. Equal inputs give equal outputs."""

import argparse
import hashlib
import json
import os
import pathlib
import struct
import time
import uuid
import zipfile
from xml.sax.saxutils import quoteattr

EPOCH = int(os.environ.get("SOURCE_DATE_EPOCH", "0"))
UPGRADE_CODE = "8F7B4C52-6E0D-4B6E-9B0E-0C2B6F1D9A31"  # the same in every version
FOLDERS = {"bin": "BINDIR", "docs": "DOCSDIR", "samples": "SAMPLESDIR"}  # of the tree; those that the MSI installs


def files_of(folder):
    return sorted(path for path in folder.rglob("*") if path.is_file())


def make_sbom(options):
    def element(name, version, licence, **more):
        return {"SPDXID": "SPDXRef-Package-" + name, "name": name, "versionInfo": version,
                "downloadLocation": "NOASSERTION", "filesAnalyzed": bool(more), "licenseConcluded": licence,
                "licenseDeclared": licence, "copyrightText": "NOASSERTION", **more}

    rows = [line.split("\t") for line in options.components.read_text().splitlines()]
    digest = hashlib.sha1()
    files = []
    for number, path in enumerate(files_of(options.folder)):
        content = path.read_bytes()
        digest.update(content)
        files.append({"SPDXID": f"SPDXRef-File-{number}", "fileName": "./" + path.relative_to(options.folder).as_posix(),
                      "checksums": [{"algorithm": "SHA1", "checksumValue": hashlib.sha1(content).hexdigest()},
                                    {"algorithm": "SHA256", "checksumValue": hashlib.sha256(content).hexdigest()}],
                      "licenseConcluded": "NOASSERTION", "copyrightText": "NOASSERTION"})
    own = "SPDXRef-Package-warrenby"
    sums = "".join(sorted(file["checksums"][0]["checksumValue"] for file in files))
    verification = {"packageVerificationCodeValue": hashlib.sha1(sums.encode()).hexdigest(),
                    "packageVerificationCodeExcludedFiles": ["./" + options.output.name]}
    document = {
        "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"warrenby-{options.version}",
        "documentNamespace": f"urn:uuid:{uuid.uuid5(uuid.NAMESPACE_URL, 'warrenby/' + digest.hexdigest())}",
        "creationInfo": {"created": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(EPOCH)),
                         "creators": ["Tool: scripts/package"]},
        "packages": [element("warrenby", options.version, "Apache-2.0", packageVerificationCode=verification)] +
                    [element(name, version, "NOASSERTION") for name, version in rows],
        "files": files,
        "relationships":
            [{"spdxElementId": "SPDXRef-DOCUMENT", "relationshipType": "DESCRIBES", "relatedSpdxElement": own}] +
            [{"spdxElementId": own, "relationshipType": "CONTAINS", "relatedSpdxElement": file["SPDXID"]}
             for file in files] +
            [{"spdxElementId": own, "relationshipType": "STATIC_LINK", "relatedSpdxElement": "SPDXRef-Package-" + name}
             for name, _ in rows],
    }
    options.output.write_text(json.dumps(document, indent=1) + "\n")


def make_zip(options):
    date = time.gmtime(max(EPOCH, 315532800))[:6]  # the format begins in 1980
    with zipfile.ZipFile(options.output, "w", zipfile.ZIP_DEFLATED, compresslevel=6) as archive:
        for path in files_of(options.folder / options.name):
            entry = zipfile.ZipInfo(path.relative_to(options.folder).as_posix(), date)
            entry.external_attr = 0o644 << 16
            entry.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(entry, path.read_bytes())


def identity(text):
    return str(uuid.uuid5(uuid.UUID(UPGRADE_CODE), text)).upper()


# Custom actions: name, program, arguments, when it runs, place in the sequence, condition. Those that install come after
# the registry value that names the home folder (5000); those that uninstall when the services have stopped (1900) and the
# files are still there (3500). A service that does not start leaves the installation as it is: the event log has the reason.
INSTALLS = 'NOT (REMOVE="ALL")'
FIRST = "NOT Installed AND NOT WIX_UPGRADE_DETECTED"
INSTALL = 'service install --account "[SERVICEACCOUNT]"'  # empty: as it is, else the default
REMOVES = '(REMOVE="ALL") AND NOT UPGRADINGPRODUCTCODE'
ACTIONS = (
    ("UninstallHost", "wrbhost.exe", "service uninstall", "ignore", 1910, f"{REMOVES} AND NOT PURGE"),
    ("UninstallBackEnd", "wrbback.exe", "service uninstall", "ignore", 1920, f"{REMOVES} AND NOT PURGE"),
    ("PurgeHost", "wrbhost.exe", "service uninstall --purge", "ignore", 1930, f"{REMOVES} AND PURGE"),
    ("PurgeBackEnd", "wrbback.exe", "service uninstall --purge", "ignore", 1940, f"{REMOVES} AND PURGE"),
    ("UndoBackEnd", "wrbback.exe", "service uninstall", "rollback", 5100, FIRST),
    ("InstallBackEnd", "wrbback.exe", INSTALL, "check", 5110, INSTALLS),
    ("UndoHost", "wrbhost.exe", "service uninstall", "rollback", 5120, FIRST),
    ("InstallHost", "wrbhost.exe", INSTALL, "check", 5130, INSTALLS),
    ("StartBackEnd", "wrbback.exe", "service start", "ignore", 5910, INSTALLS),
    ("StartHost", "wrbhost.exe", "service start", "ignore", 5920, INSTALLS),
)
SERVICES = ("WarrenbyHost", "WarrenbyBackEnd")  # in the order of their stop
HOME_KEY = r"SOFTWARE\CallowaySystems\Warrenby\service\Information"


def component(name, inner, indent=10, of=None):
    """`of`: what the component is known by in every version, when that is not its name here."""
    return (" " * indent + f'<Component Id="{name}" Guid="{identity(of or name)}" Win64="yes">\n' + inner +
            " " * indent + "</Component>\n")


def make_wxs(options):
    """File names are relative to the tree, where wixl runs."""
    names, folders = [], ""
    for folder, directory in FOLDERS.items():
        inner = ""
        for number, path in enumerate(files_of(options.folder / folder)):
            if path.parent != options.folder / folder:
                continue  # samples in folders are in the zip
            name = f"{directory}.{number}"
            names.append(name)
            identifier = path.name if folder == "bin" else name
            inner += component(name, f'            <File Id="{identifier}" Name={quoteattr(path.name)} '
                                     f'Source={quoteattr(str(path.relative_to(options.folder)))} KeyPath="yes"/>\n',
                               of=f"{folder}/{path.name}")
        folders += f'        <Directory Id="{directory}" Name="{folder}">\n{inner}        </Directory>\n'
    home = component("Home", f'            <CreateFolder/>\n            <RegistryKey Root="HKLM" Key="{HOME_KEY}">\n'
                             '              <RegistryValue Name="Local_Path" Type="string" Value="[HOMEDIR]" '
                             'KeyPath="yes"/>\n'
                             '              <RegistryValue Name="Install_Path" Type="string" Value="[INSTALLDIR]"/>\n'
                             '            </RegistryKey>\n' +
                     "".join(f'            <ServiceControl Id="{name}" Name="{name}" Stop="both" '
                             'Wait="yes"/>\n' for name in SERVICES))
    licences = "".join(component("File." + name, f'            <File Id="{name}" Name="{name}" '
                                                 f'Source={quoteattr(name)} KeyPath="yes"/>\n', 8)
                       for name in ("LICENSE", "THIRD-PARTY-NOTICES.txt"))
    names += ["Home", "File.LICENSE", "File.THIRD-PARTY-NOTICES.txt"]
    actions = "".join(f'    <CustomAction Id="{name}" FileKey="{file}" ExeCommand={quoteattr(arguments)} Impersonate="no" '
                      f'Execute="{"rollback" if when == "rollback" else "deferred"}" '
                      f'Return="{"check" if when == "check" else "ignore"}"/>\n'
                      for name, file, arguments, when, _, _ in ACTIONS)
    order = "".join(f'      <Custom Action="{name}" Sequence="{place}">{condition}</Custom>\n'
                    for name, _, _, _, place, condition in ACTIONS)
    options.output.write_text(f"""<?xml version="1.0" encoding="utf-8"?>
<Wix xmlns="http://schemas.microsoft.com/wix/2006/wi">
  <Product Id="{identity("product " + options.version)}" Name="Warrenby" Language="1033" Version="{options.version}"
           Manufacturer="Calloway Systems" UpgradeCode="{UPGRADE_CODE}">
    <Package InstallerVersion="500" Compressed="yes" InstallScope="perMachine"
             Description="Warrenby command host and back end" Manufacturer="Calloway Systems"/>
    <Media Id="1" Cabinet="warrenby.cab" EmbedCab="yes"/>
    <MajorUpgrade DowngradeErrorMessage="A newer version of Warrenby is installed."/>
    <Property Id="INSTALLDIR">
      <RegistrySearch Id="InstallDir" Root="HKLM" Key="{HOME_KEY}" Name="Install_Path" Type="raw" Win64="yes"/>
    </Property>
    <Directory Id="TARGETDIR" Name="SourceDir">
      <Directory Id="ProgramFiles64Folder">
      <Directory Id="INSTALLDIR" Name="Warrenby">
{licences}{folders}        <Directory Id="HOMEDIR" Name="Server">
{home}        </Directory>
      </Directory>
      </Directory>
    </Directory>
    <Feature Id="Server" Title="Server" Level="1" ConfigurableDirectory="INSTALLDIR">
{"".join(f'      <ComponentRef Id="{name}"/>' + chr(10) for name in names)}    </Feature>
{actions}    <InstallExecuteSequence>
{order}    </InstallExecuteSequence>
  </Product>
</Wix>
""")


def set_times(options):
    """The times of creation and of the last change in an MSI's summary: wixl takes those of the clock."""
    content = bytearray(options.output.read_bytes())
    form = bytes.fromhex("E0859FF2F94F6810AB9108002B27B3D9")  # of a summary
    section = content.index(form) - 28 + struct.unpack_from("<I", content, content.index(form) + 16)[0]
    _, count = struct.unpack_from("<II", content, section)
    properties = [struct.unpack_from("<II", content, section + 8 + 8 * i) for i in range(count)]
    for place in [section + offset for number, offset in properties if number in (12, 13)]:
        if struct.unpack_from("<I", content, place) != (64,):
            raise SystemExit("the summary of the MSI has another form")
        struct.pack_into("<Q", content, place + 4, (EPOCH + 11644473600) * 10_000_000)  # FILETIME
    options.output.write_bytes(content)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("what", choices=("sbom", "zip", "wxs", "times"))
    parser.add_argument("--version")
    parser.add_argument("--name")
    for path in ("components", "folder", "output"):
        parser.add_argument("--" + path, type=pathlib.Path)
    options = parser.parse_args()
    {"sbom": make_sbom, "zip": make_zip, "wxs": make_wxs, "times": set_times}[options.what](options)


main()
