# shellcheck shell=bash disable=SC2034
# What the scripts share. Sourced, not run.

as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)

# Says what comes next, with the seconds since the start.
announce() {
    printf '%4d s  %s\n' "$SECONDS" "$*"
}

# Installs those of the named Debian packages that are missing.
need_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
            missing+=("$package")
    done
    [ "${#missing[@]}" -gt 0 ] || return 0
    announce "installing ${missing[*]}"
    "${as_root[@]}" apt-get update -qq || echo "apt-get update failed: the lists that are here are used" >&2
    DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y -qq --no-install-recommends \
        "${missing[@]}" >/dev/null
}

# What the programs are built with, and what the tests need.
need_test_packages() {
    need_packages g++ cmake ninja-build libjsonparser-dev nlohmann-json3-dev libgtest-dev mandoc jq \
        python3 python3-jsonschema zsh fish graphviz git strace systemd binutils libxml2-utils sqlite3 \
        hunspell hunspell-en-gb
}

# Unpacks promtool, which judges metrics and alerts, below build/tools, and puts it in PATH. The package
# is not installed, since it starts a service. Fails, with apt's reason, when it cannot be had.
need_promtool() {
    local tools=$PWD/build/tools
    PATH=$tools/usr/bin:$PATH
    command -v promtool >/dev/null && return
    announce "unpacking promtool into build/tools"
    mkdir -p "$tools"
    "${as_root[@]}" apt-get update -qq || true
    (cd "$tools" && apt-get download -qq -o APT::Sandbox::User=root prometheus &&
        dpkg-deb -x prometheus_*.deb . && rm prometheus_*.deb)
}

# Configures and builds a preset, quietly unless that fails. Further words go to the configuration.
build_preset() {
    local preset=$1 log
    shift
    announce "building into build/$preset"
    log=$(mktemp)
    if ! { cmake --preset "$preset" "$@" && cmake --build --preset "$preset"; } >"$log" 2>&1; then
        cat "$log"
        rm -f "$log"
        return 1
    fi
    rm -f "$log"
}

# Starts the simulated controller with the given options on a free port; sets SIM_PID and SIM_PORT.
start_sim() {
    local program=$1 line
    shift
    exec {sim_out}< <(exec "$program" --port 0 "$@")
    SIM_PID=$!
    read -r line <&"$sim_out"
    SIM_PORT=${line##*:}
}

stop_sim() {
    kill "$SIM_PID"
    wait "$SIM_PID" 2>/dev/null || true
    exec {sim_out}<&-
}
