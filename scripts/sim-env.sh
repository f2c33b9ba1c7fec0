# Source this file to run the station simulator beside Morvane:
#
#   . scripts/sim-env.sh
#   sim_start BIN_DIR HOME_DIR INSTANCE   # morvane-sim in the background
#   sim_ask state                         # one control line, one answer
#   sim_stop
#
# sim_start links the simulator's line to HOME_DIR/.morvane-sim/sei, writes the
# instance's INI (Morvane.ini for 0, Morvane_N.ini otherwise) with its SEI port
# on that link and the encoders at addresses 0 and 1, and exports SIM_PID,
# SIM_LINK and SIM_SOCKET. Other sections of an existing INI are kept.

sim_start() {
    local bin_dir=$1 home_dir=$2 instance=${3:-0}
    if [ -z "$bin_dir" ] || [ -z "$home_dir" ]; then
        echo "usage: sim_start BIN_DIR HOME_DIR INSTANCE" >&2
        return 2
    fi
    local run_dir="$home_dir/.morvane-sim"
    local config_dir="$home_dir/.config/Morvane"
    local ini="$config_dir/Morvane.ini"
    [ "$instance" != 0 ] && ini="$config_dir/Morvane_$instance.ini"
    mkdir -p "$run_dir" "$config_dir" || return 1
    SIM_BIN=$bin_dir/morvane-sim
    SIM_LINK=$run_dir/sei
    SIM_SOCKET=$run_dir/control
    rm -f "$SIM_LINK" "$SIM_SOCKET"
    "$SIM_BIN" --link "$SIM_LINK" --control "$SIM_SOCKET" --log "$run_dir/frames.log" \
        >"$run_dir/sim.out" 2>&1 </dev/null &
    SIM_PID=$!
    export SIM_PID SIM_LINK SIM_SOCKET SIM_BIN
    local tries=0
    while [ ! -e "$SIM_LINK" ] || [ ! -S "$SIM_SOCKET" ]; do
        tries=$((tries + 1))
        if [ $tries -gt 100 ] || ! kill -0 "$SIM_PID" 2>/dev/null; then
            echo "morvane-sim did not come up; see $run_dir/sim.out" >&2
            sim_stop
            return 1
        fi
        sleep 0.05
    done
    sim_write_ini "$ini" "$SIM_LINK"
}

# Replace the SEI section and set the ANTENNA addresses, keeping the rest.
sim_write_ini() {
    local ini=$1 link=$2 tmp
    tmp=$(mktemp) || return 1
    if [ -f "$ini" ]; then
        awk '
            /^\[/ { skip = ($0 == "[SEI]") }
            !skip && !/^(AZ_Addr|EL_Addr)=/ { print }
            $0 == "[ANTENNA]" && !skip { print "AZ_Addr=0"; print "EL_Addr=1"; seen = 1 }
            END { if (!seen) { print "[ANTENNA]"; print "AZ_Addr=0"; print "EL_Addr=1" } }
        ' "$ini" >"$tmp"
    else
        printf '[ANTENNA]\nAZ_Addr=0\nEL_Addr=1\n' >"$tmp"
    fi
    printf '[SEI]\nSeiDebug=0\nSeiDebugVerbose=0\nPortName=%s\nBaudRate=9600\nDataBits=8\nStopBits=1\nParity=None\nFlowControl=None\n' \
        "$link" >>"$tmp"
    mv "$tmp" "$ini"
}

sim_ask() {
    "$SIM_BIN" --ask "$SIM_SOCKET" "$@"
}

sim_stop() {
    if [ -n "$SIM_PID" ]; then
        kill "$SIM_PID" 2>/dev/null
        wait "$SIM_PID" 2>/dev/null
    fi
    unset SIM_PID
}
