#!/usr/bin/env bash
# package.sh: makes what a release consists of in build/packages: Debian packages, a tarball for other distributions of Linux, a zip
# for Windows, wheels, symbols for debuggers, SHA256SUMS. The same commit gives the same bytes. docs/packages.md
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
export LC_ALL=C TZ=UTC
umask 022

install "${build_packages[@]}" g++-mingw-w64-x86-64-win32 libz-mingw-w64-dev dpkg-dev binutils git python3 xz-utils zip
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}
export SOURCE_DATE_EPOCH
[ -z "$(git status --porcelain)" ] || echo "package.sh: what is not committed goes into the packages, too" >&2

unset CCACHE_BASEDIR  # it would put other paths into the symbols than a build without ccache
for preset in package-debian package-portable package-windows; do build "$preset"; done
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' build/package-debian/CMakeCache.txt)

out=$PWD/build/packages work=$PWD/build/package-work
rm -rf "$out" "$work"
mkdir -p "$out" "$work/symbols"

# install_tree PRESET FOLDER [OPTION...]: what `cmake --install` makes of a build.
install_tree() {
  local preset=$1 folder=$2
  shift 2
  DESTDIR=$folder quietly "$preset-install" cmake --install "build/$preset" "$@"
}

# strip_tree FOLDER [PREFIX]: moves symbols of binaries to symbols/, by the binary's build id or, on Windows, by its name.
strip_tree() {
  local folder=$1 prefix=${2:-} file id symbols
  while IFS= read -r file; do
    case $file in
      *.a) "${prefix}strip" --strip-debug --enable-deterministic-archives "$file" && continue ;;
      *.exe | *.dll) symbols=$work/symbols/windows/$(basename "$file").debug ;;
      *)
        id=$(readelf -n "$file" | sed -n 's/.*Build ID: //p')
        symbols=$work/symbols/.build-id/${id:0:2}/${id:2}.debug
        ;;
    esac
    mkdir -p "$(dirname "$symbols")"
    "${prefix}objcopy" --only-keep-debug "$file" "$symbols"
    chmod -x "$symbols"
    "${prefix}strip" --strip-unneeded --remove-section=.comment --remove-section=.note "$file"
    case $file in
      *.exe | *.dll) "${prefix}objcopy" --add-gnu-debuglink="$symbols" "$file" ;;
    esac
  done < <(find "$folder" -type f \( -path '*/bin/*' -o -name '*.so*' -o -name '*.exe' -o -name '*.dll' -o -name '*.a' \) ! -name '*.dll.a' | sort)
}

# date_tree FOLDER: gives its files the date of the commit, and the usual modes.
date_tree() {
  find "$1" -type d -exec chmod 755 {} +
  find "$1" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +
}

# pack FOLDER FILE [LEVEL]: the folder as a tarball.
pack() {
  date_tree "$1"
  tar --sort=name --owner=0 --group=0 --numeric-owner --format=gnu -C "$(dirname "$1")" -c "$(basename "$1")" | xz -T1 "-${3:-6}" >"$2"
}

# ---- Debian ----

debian_version=$version-1
maintainer='ZRMLProvider authors <zrml@example.org>'

# needed_packages PACKAGE TREE: the packages that its binaries need, by what they import.
needed_packages() {
  local place=$work/shlibdeps binaries
  mapfile -t binaries < <(find "$2" -type f \( -path '*/bin/*' -o -name '*.so*' \))
  [ ${#binaries[@]} -gt 0 ] || return 0
  mkdir -p "$place/debian"
  printf 'Source: zrml\n\nPackage: %s\nArchitecture: any\n' "$1" >"$place/debian/control"
  (cd "$place" && dpkg-shlibdeps -O -l"$work/debian/libzrml1/usr/lib/x86_64-linux-gnu" "${binaries[@]}" 2>/dev/null) | sed 's/^shlibs:Depends=//'
}

# debian_package PACKAGE COMPONENT
debian_package() {
  local name=$1 tree=$work/debian/$1 doc shlibs script
  install_tree package-debian "$tree" --component "$2"
  strip_tree "$tree"
  doc=$tree/usr/share/doc/$name
  mkdir -p "$doc" "$tree/DEBIAN"
  { cat LICENSE && echo && cat THIRD_PARTY.md; } >"$doc/copyright"
  gzip -9n <CHANGELOG.md >"$doc/changelog.gz"
  printf 'zrml (%s) unstable; urgency=medium\n\n  * Version %s; changelog.gz has the changes.\n\n -- %s  %s\n' \
    "$debian_version" "$version" "$maintainer" "$(date -R -d "@$SOURCE_DATE_EPOCH")" | gzip -9n >"$doc/changelog.Debian.gz"
  find "$tree/usr/share/man" -type f -exec gzip -9n {} + 2>/dev/null || true
  shlibs=$(needed_packages "$name" "$tree")
  {
    printf 'Package: %s\n' "$name"
    [ "$name" = zrml ] || echo 'Source: zrml'
    printf 'Version: %s\nArchitecture: amd64\nMaintainer: %s\nPriority: optional\n' "$debian_version" "$maintainer"
    printf 'Installed-Size: %s\n' "$(du -k --apparent-size -s "$tree/usr" | cut -f1)"
    awk -v RS= -v name="$name" '$0 ~ "^Package: " name "\n"' packaging/control |
      sed -e 1d -e "s/\${version}/$debian_version/g" -e "s/\${shlibs}/$shlibs/"
  } >"$tree/DEBIAN/control"
  if [ "$name" = libzrml1 ]; then
    echo "libzrml 1 libzrml1 (>= $version)" >"$tree/DEBIAN/shlibs"
    echo "activate-noawait ldconfig" >"$tree/DEBIAN/triggers"
  fi
  for script in postinst prerm; do
    [ ! -e "packaging/$name.$script" ] || command install -m 755 "packaging/$name.$script" "$tree/DEBIAN/$script"
  done
  (cd "$tree" && find usr -type f -print0 | sort -z | xargs -0 md5sum) >"$tree/DEBIAN/md5sums"
  date_tree "$tree"
  quietly "$name-deb" dpkg-deb --root-owner-group -Zxz --build "$tree" "$out/${name}_${debian_version}_amd64.deb"
}

# ---- Everything else ----

# notices FOLDER: beside the files of an archive.
notices() { cp LICENSE THIRD_PARTY.md CHANGELOG.md "$1"; }

portable_package() {
  local name=zrml-$version-linux-x86_64 tree
  install_tree package-portable "$work/portable" --prefix "/$name"
  tree=$work/portable/$name
  strip_tree "$tree"
  rm -r "$tree/share/doc"
  notices "$tree"
  cp /usr/share/common-licenses/Apache-2.0 "$tree/Apache-2.0.txt"
  python3 -B python/make_wheel.py "$tree/lib/zrml/python/zrml" "$version" linux_x86_64 "$out" >/dev/null
  pack "$tree" "$out/$name.tar.xz"
}

windows_package() {
  local name=zrml-$version-windows-x64 tree
  install_tree package-windows "$work/windows" --prefix "/$name"
  tree=$work/windows/$name
  strip_tree "$tree" x86_64-w64-mingw32-
  cp "$tree/zrml.dll" "$tree/lib/zrml/python/zrml/"
  python3 -B python/make_wheel.py "$tree/lib/zrml/python/zrml" "$version" win_amd64 "$out" >/dev/null
  rm -r "$tree/share" "$tree/lib/zrml"
  cp "$out/zrml-$version-py3-none-win_amd64.whl" "$tree"
  sed "s/\${version}/$version/" packaging/windows.txt | sed 's/$/\r/' >"$tree/README.txt"
  notices "$tree"
  mv "$tree/LICENSE" "$tree/LICENSE.txt"
  date_tree "$tree"
  (cd "$work/windows" && find "$name" | sort | zip -q -X -9 -@ "$out/$name.zip")
}

debian_package libzrml1 library
debian_package libzrml-dev development
debian_package zrml program
debian_package python3-zrml python
debian_package zrml-plugin plugin
portable_package
windows_package
mkdir "$work/zrml-$version-symbols"
mv "$work"/symbols/windows "$work"/symbols/.build-id "$work/zrml-$version-symbols"
pack "$work/zrml-$version-symbols" "$out/zrml-$version-symbols.tar.xz" 2  # there are 200 MB of them
(cd "$out" && sha256sum -- * >SHA256SUMS && cat SHA256SUMS)
