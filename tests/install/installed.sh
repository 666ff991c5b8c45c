#!/usr/bin/env bash
# installed.sh PROJECT BUILD VERSION MAKE_SAMPLE: what `cmake --install` makes of BUILD works after it has been moved: the
# program, hosts built against it, the Python package, the plug-in. So does the build itself for hosts built by CMake.
set -euo pipefail
project=$1 build=$2 version=$3 make_sample=$4
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

cmake --install "$build" --prefix "$folder/first place" >install.log
mkdir "second place"
mv "first place" "second place/tree"
tree=$folder/second\ place/tree
! grep -rIl "$folder/first place" "$tree" || { echo "these files name the place of installation"; exit 1; }
! grep -rIlF -e "$build" -e "$project" "$tree" || { echo "these files name the place of the build"; exit 1; }

"$make_sample" run.raw >/dev/null
[ "$("$tree/bin/zrml" --version)" = "zrml $version" ]
for file in man/man1/zrml.1 man/man1/zrml-info.1 bash-completion/completions/zrml zsh/site-functions/_zrml; do
  [ -s "$tree/share/$file" ] || { echo "no $file"; exit 1; }
done
plugin=$(find "$tree" -name 'ZRMLProvider-x64.so')
"$tree/bin/zrml" plugin "$plugin" run.raw >plugin.txt
mkdir installed
(cd installed && "$project/tests/install/hosts.sh" "$project" "$version" "$folder/run.raw" "$tree")

python=$(dirname "$(dirname "$(find "$tree" -path '*/zrml/__init__.py')")")
[ "$(PYTHONPATH=$python /usr/bin/python3 -B -c 'import zrml; print(zrml.__version__, len(zrml.open("run.raw").functions))')" = "$version 4" ]

cmake -S "$project/tests/install/host" -B from-build -DEXAMPLES="$project/examples" -DVERSION="$version" \
  -Dzrml_DIR="$build" >cmake.log || { cat cmake.log; exit 1; }
cmake --build from-build >build.log || { cat build.log; exit 1; }
for host in zrml_c zrml_cpp static_c static_cpp; do "from-build/$host" run.raw | cmp - installed/by-cmake/zrml_c.txt; done

# Another major version is another interface.
! cmake -S "$project/tests/install/host" -B other -DEXAMPLES="$project/examples" -DVERSION=$((${version%%.*} + 1)) \
  -DCMAKE_PREFIX_PATH="$tree" >other.log 2>&1 || { echo "any version will do"; exit 1; }
grep -q "$version" other.log
