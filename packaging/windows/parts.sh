# What the scripts of this folder share: where the built libraries lie and how they are keyed.
# Sourced, never run.

windows=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
tree=$(cd "$windows/../.." && pwd)
cache=${VENLO_CACHE:-${XDG_CACHE_HOME:-${HOME:-$(eval echo ~)}/.cache}/venlo}/windows
triplet=x86_64-w64-mingw32

# Options of the libraries. A change of one makes a new folder in the cache. What the program has
# no use for is left out: it takes an hour to build as it is.
qt_options=(
    -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=ON
    -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF -DQT_BUILD_BENCHMARKS=OFF
    -DQT_BUILD_MANUAL_TESTS=OFF -DQT_BUILD_TOOLS_WHEN_CROSSCOMPILING=OFF
    -DFEATURE_dynamicgl=OFF -DFEATURE_opengl=OFF -DFEATURE_vulkan=OFF -DFEATURE_tabletevent=OFF
    -DFEATURE_icu=OFF -DFEATURE_dbus=OFF -DFEATURE_sql=OFF -DFEATURE_printsupport=OFF
    -DFEATURE_xml=OFF -DFEATURE_concurrent=OFF -DFEATURE_pkg_config=OFF -DFEATURE_glib=OFF
    -DFEATURE_system_zlib=OFF -DFEATURE_system_png=OFF -DFEATURE_system_jpeg=OFF
    -DFEATURE_system_freetype=OFF -DFEATURE_system_harfbuzz=OFF -DFEATURE_system_pcre2=OFF
    -DFEATURE_system_doubleconversion=OFF -DFEATURE_system_libb2=OFF
    -DFEATURE_graphicsview=OFF -DFEATURE_graphicseffect=OFF -DFEATURE_wizard=OFF
    -DFEATURE_mdiarea=OFF -DFEATURE_pdf=OFF -DFEATURE_textodfwriter=OFF -DFEATURE_undogroup=OFF
    -DFEATURE_fontdialog=OFF -DFEATURE_colordialog=OFF -DFEATURE_androiddeployqt=OFF
    -DFEATURE_zstd=OFF -DFEATURE_brotli=OFF -DFEATURE_gssapi=OFF
    -DINPUT_openssl=runtime
)
openssl_options=(shared no-tests no-legacy no-engine no-capieng)
sqlite_options=(-O2 -DSQLITE_THREADSAFE=1 -DSQLITE_OMIT_LOAD_EXTENSION)

say() { echo "$*" >&2; }

key() { # OPTION...: short name of a set of options
    printf '%s\n' "$@" | sha256sum | cut -c 1-8
}

host_version() { # PACKAGE: the version of the source that the installed package was made from
    dpkg-query -W -f='${source:Version}' "$1" 2>/dev/null || true
}

newest_built() { # NAME KEY: the folder of the newest version that was built, nothing for none
    find "$cache" -mindepth 2 -maxdepth 2 -path "$cache/$1-*-$2/.whole" -printf '%h\n' 2>/dev/null |
        sort -V | tail -n 1
}

whole() { # PREFIX: it was built and moved to its place
    [ -e "$1/.whole" ]
}

# Qt must have the version of the host's tools (moc, rcc); of the others the newest is taken that
# was built here.
qt_version=$(host_version qt6-base-dev-tools)
qt_prefix=$cache/qt-$qt_version-$(key "${qt_options[@]}")
openssl_prefix=$(newest_built openssl "$(key "${openssl_options[@]}")")
sqlite_prefix=$(newest_built sqlite "$(key "${sqlite_options[@]}")")

runtime_folders() { # where the DLLs of a built program lie, one a line
    printf '%s\n' "$qt_prefix/bin" "$openssl_prefix/bin"
    dirname "$($triplet-g++-posix -print-file-name=libstdc++-6.dll)"
    dirname "$($triplet-g++-posix -print-file-name=libwinpthread-1.dll)"
}
