#!/bin/sh
# Runs the demo as a daemon for a few heartbeats: shows the parent's exit
# status, stops the daemon with SIGTERM, waits for it to go and prints the
# log it wrote. Usage: run-demo.sh DEMO CONFIG, in a scratch directory.
demo=$1
config=$2
rm -f demo*.log demo.pid

"$demo" -config "$config"
status=$?
echo "parent exit status: $status"
[ "$status" -eq 0 ] || exit 1
pid=$(cat demo.pid)
echo "daemon running as process $pid"

# Gone, or ended and not yet reaped by whoever adopted it.
running() {
    kill -0 "$1" 2>/dev/null && [ "$(cut -d' ' -f3 "/proc/$1/stat" 2>/dev/null)" != Z ]
}

sleep 3.5
echo "sending SIGTERM to $pid"
kill -TERM "$pid"
tries=0
while running "$pid"; do
    tries=$((tries + 1))
    if [ "$tries" -gt 50 ]; then
        echo "daemon $pid did not stop"
        exit 1
    fi
    sleep 0.1
done
echo "daemon stopped; its log:"
cat demo*.log
