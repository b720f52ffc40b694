# Sound for a machine that has none; sourced by run.

# Whether some sound server answers or some sound card is there.
has_sound() {
    local socket=${XDG_RUNTIME_DIR:-/nonexistent}/pulse/native
    [[ -n ${PULSE_SERVER-} || -S $socket ]] && return 0
    [[ -r /proc/asound/cards ]] && grep -q '^ *[0-9]' /proc/asound/cards
}

# Starts a sound server of this shell's own with an output that nobody hears but that can be recorded. It ends
# with the shell.
start_private_sound() {
    private_sound=$(mktemp -d)
    chmod 700 "$private_sound"
    export XDG_RUNTIME_DIR=$private_sound PULSE_SERVER=unix:$private_sound/pulse.sock ALSA_CONFIG_PATH=/dev/null
    env -u PULSE_SERVER HOME="$private_sound" pulseaudio --daemonize=no --exit-idle-time=-1 -n --log-level=error \
        --use-pid-file=no \
        -L "module-null-sink sink_name=out rate=48000 norewinds=1" \
        -L "module-native-protocol-unix auth-anonymous=1 srbchannel=no socket=$private_sound/pulse.sock" &
    private_sound_pid=$!
    trap stop_private_sound EXIT
    local attempt
    for ((attempt = 0; attempt < 100; ++attempt)); do
        [[ -S $private_sound/pulse.sock ]] && return 0
        kill -0 "$private_sound_pid" 2>/dev/null || break
        sleep 0.1
    done
    echo "The private sound server does not start; the talk goes on without sound." >&2
}

stop_private_sound() {
    kill "$private_sound_pid" 2>/dev/null || true
    wait "$private_sound_pid" 2>/dev/null || true
    rm -rf "$private_sound"
}
