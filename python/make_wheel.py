"""make_wheel.py PACKAGE VERSION PLATFORM FOLDER: makes zrml-VERSION-py3-none-PLATFORM.whl in FOLDER and prints its path.

PACKAGE is the folder `zrml` with the C library in it. Needs nothing but the standard library. The same package gives the
same bytes wherever and whenever the wheel is made.
"""

import base64
import hashlib
import pathlib
import stat
import sys
import zipfile

METADATA = """\
Metadata-Version: 2.1
Name: zrml
Version: {version}
Summary: Reads mass-spectrometry data: raw directories and reports
License: MIT
License-File: LICENSE
License-File: THIRD_PARTY.md
Requires-Python: >=3.9
Requires-Dist: numpy >=1.20
Provides-Extra: pandas
Requires-Dist: pandas ; extra == 'pandas'
"""

WHEEL = """\
Wheel-Version: 1.0
Generator: make_wheel
Root-Is-Purelib: false
Tag: py3-none-{platform}
"""

PROJECT = pathlib.Path(__file__).parent.parent
NOTICES = ("LICENSE", "THIRD_PARTY.md")
LIBRARIES = {"linux_x86_64": "libzrml.so", "win_amd64": "zrml.dll"}


def package_files(package, library):
    """The bytes of each file of the package, by its name in the wheel."""
    paths = sorted(path for path in package.iterdir() if path.suffix == ".py" or path.name in ("py.typed", library))
    if library not in {path.name for path in paths}:
        sys.exit(f"make_wheel: {package} has no {library}")
    return {f"zrml/{path.name}": path.read_bytes() for path in paths}


def record_of(files, itself):
    """Name, digest and size of each file; the record has neither for itself."""
    lines = []
    for name, content in files.items():
        digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode()
        lines.append(f"{name},sha256={digest},{len(content)}\n")
    return "".join(lines) + f"{itself},,\n"


def write_wheel(path, files):
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as wheel:
        for name, content in files.items():
            entry = zipfile.ZipInfo(name)  # of 1980, the first day that a zip can tell
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3  # Unix, on any system
            entry.external_attr = (stat.S_IFREG | (0o755 if name.endswith((".so", ".dll")) else 0o644)) << 16
            wheel.writestr(entry, content)


def main():
    if len(sys.argv) != 5 or sys.argv[3] not in LIBRARIES:
        sys.exit(f"usage: make_wheel.py PACKAGE VERSION {'|'.join(LIBRARIES)} FOLDER")
    package, version, platform, folder = sys.argv[1:]
    information = f"zrml-{version}.dist-info"
    files = package_files(pathlib.Path(package), LIBRARIES[platform])
    files[f"{information}/METADATA"] = METADATA.format(version=version).encode()
    files[f"{information}/WHEEL"] = WHEEL.format(platform=platform).encode()
    for name in NOTICES:
        files[f"{information}/{name}"] = (PROJECT / name).read_bytes()
    files[f"{information}/RECORD"] = record_of(files, f"{information}/RECORD").encode()
    path = pathlib.Path(folder) / f"zrml-{version}-py3-none-{platform}.whl"
    write_wheel(path, files)
    print(path)


main()
