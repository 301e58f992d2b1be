#!/bin/sh
# A client of the preset service for the shell, with dbus-send, which is wherever dbus-daemon is.
# Where there is morvanectl, "morvanectl store PRESET FILE" is shorter.
set -eu

service=org.norvix.preset

# A load tries each of its six operations ten times, a second apart, before it gives up. After D-Bus's
# usual 25 seconds nobody would be there to hear of it.
timeout_seconds=60

fail() {
    printf 'client: %s\n' "$1" >&2
    exit 1
}

# Sends a call. Leaves the answer in $answer, or ends with what the service said.
send() {
    answer=$(dbus-send --session --reply-timeout=$((timeout_seconds * 1000)) "$@" 2>&1) ||
        fail "${answer#Error *: }" # without the name of the error
}

# Waits until the service is on the bus, and has the bus start it if the bus knows how.
wait_for_service() {
    left=$1
    # Without --print-reply nobody waits for the answer, which may be that it cannot be started.
    send --type=method_call --dest=org.freedesktop.DBus /org/freedesktop/DBus \
        org.freedesktop.DBus.StartServiceByName "string:$service" uint32:0
    while :; do
        send --print-reply=literal --dest=org.freedesktop.DBus /org/freedesktop/DBus \
            org.freedesktop.DBus.NameHasOwner "string:$service"
        [ "${answer##* }" != true ] || return 0
        [ "$left" -gt 0 ] || fail "$service is not on the bus"
        left=$((left - 1))
        sleep 1
    done
}

# Stores a preset in a file, or loads it. A request that fails is answered with an error, so there is
# no need to look at the answer.
request() {
    method=$1 preset=$2 file=$3
    case $file in
    /*) ;;
    *) file=$PWD/$file ;; # the daemon's own folder is "/"
    esac
    send --print-reply=literal "--dest=$service" /preset "$service.$method" \
        "string:$preset" "string:$file"
}

case "$#:${1:-}" in
2:wait) wait_for_service "$2" ;;
3:store | 3:load) request "$@" ;;
*)
    echo "Usage: client wait SECONDS | store PRESET FILE | load PRESET FILE" >&2
    exit 2
    ;;
esac
