# Shell function that brings the real CAD part of the demonstration; needs install.sh.
# shellcheck shell=bash

# demo_part FILE: writes the STEP file of the part, which package gmsh-doc ships, to FILE. Where the
# system leaves documentation out when it installs packages, it is taken out of the package itself.
demo_part() {
    local target=$1 name=t20_data.step found folder
    need gmsh-doc gzip || return 1
    mkdir -p "$(dirname "$target")"
    found=$(dpkg -L gmsh-doc | grep -E "/$name(\.gz)?\$" | head -n 1 || true)
    if [ ! -f "$found" ] && [ -s "$target" ]; then return 0; fi  # taken out before
    if [ ! -f "$found" ]; then
        folder=$(mktemp -d)
        if (cd "$folder" && apt-get download -qq gmsh-doc && dpkg-deb -x gmsh-doc*.deb .) >&2; then
            found=$(find "$folder" -name "$name*" -type f | head -n 1)
        fi
    fi
    if [ ! -f "$found" ]; then
        echo "error: package gmsh-doc does not bring $name" >&2
        return 1
    fi
    # Also reads what is not compressed.
    gzip -dcf "$found" >"$target.part" || return 1
    mv "$target.part" "$target"
    if [ -n "${folder:-}" ]; then rm -rf "$folder"; fi
}
