# An FTP daemon of its own for a script: listens on loopback only, serves $work/site to the user
# "demo" with the password "demo", and is ended by finish_daemon. Sourced with $work set to a
# throwaway folder; sets $port and $daemon.

daemon=

finish_daemon() {
    if [ -n "$daemon" ]; then
        kill "$daemon" 2>/dev/null || true
        wait "$daemon" 2>/dev/null || true
    fi
}

answers() { # PORT: something listens there
    (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null
}

free_port() {
    local port
    for _ in $(seq 100); do
        port=$((20000 + RANDOM % 12000))
        if ! answers "$port"; then
            echo "$port"
            return
        fi
    done
    echo "no free port" >&2
    return 1
}

# The daemon gives up root for this user; without root it stays who it is.
owner_of_site() {
    if [ "$(id -u)" -eq 0 ]; then
        id -u daemon
    else
        id -u
    fi
}

start_daemon() {
    local ftpd libraries owner
    ftpd=$("$(dirname "${BASH_SOURCE[0]}")/setup-daemons")
    libraries=$(sed "s|^|$ftpd/|" "$ftpd/libraries" | paste -sd:)
    port=$(free_port)
    owner=$(owner_of_site)
    mkdir -p "$work/site" "$work/ftpd"
    chmod 755 "$work" "$work/site"
    printf 'demo:%s:%s:%s::%s:/bin/false\n' "$(openssl passwd -1 demo)" "$owner" \
        "$(id -g "$owner")" "$work/site" >"$work/ftpd/accounts"
    chmod 600 "$work/ftpd/accounts"
    cat >"$work/ftpd/proftpd.conf" <<CONF
ServerName "demo"
ServerType standalone
DefaultAddress 127.0.0.1
Port $port
UseIPv6 off
UseReverseDNS off
User $(id -un "$owner")
Group $(id -gn "$owner")
ModulePath $ftpd/usr/lib/proftpd
AuthOrder mod_auth_file.c
AuthUserFile $work/ftpd/accounts
RequireValidShell off
AllowOverwrite on
DelayEngine off
TransferLog none
WtmpLog off
SystemLog $work/ftpd/log
PidFile $work/ftpd/pid
ScoreboardFile $work/ftpd/scores
$([ "$(id -u)" -eq 0 ] && echo 'DefaultRoot ~')
CONF
    if [ "$(id -u)" -eq 0 ]; then chown -R daemon: "$work/site"; fi
    LD_LIBRARY_PATH=$libraries "$ftpd/usr/sbin/proftpd" -n -q -c "$work/ftpd/proftpd.conf" \
        >"$work/ftpd/out" 2>&1 &
    daemon=$!
    for _ in $(seq 100); do
        if answers "$port"; then return; fi
        if ! kill -0 "$daemon" 2>/dev/null; then break; fi
        sleep 0.1
    done
    cat "$work/ftpd/out" "$work/ftpd/log" >&2 2>/dev/null || true
    echo "the FTP daemon did not start" >&2
    exit 1
}
