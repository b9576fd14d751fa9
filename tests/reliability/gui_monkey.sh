#!/bin/sh
# The planning screen under random use for SECONDS (600 by default), on a virtual screen: clicks, typed
# texts and keys, drags, anywhere in the window. A death of the program (not a normal exit) is a finding: its exit status
# and the last lines of its standard error are reported, and the screen is started again.
#   gui_monkey.sh ZANDOREL_EXECUTABLE [SECONDS] [SEED]
exe=$1
seconds=${2:-600}
seed=${3:-1}
d=$(mktemp -d)
trap 'kill $app $xvfb 2>/dev/null; rm -rf "$d"' EXIT
display=:$((90 + $$ % 50))
Xvfb $display -screen 0 1280x1024x24 >/dev/null 2>&1 &
xvfb=$!
export DISPLAY=$display QT_QPA_PLATFORM=xcb
# Under AddressSanitizer: the D-Bus library that Qt loads keeps one buffer to the end, not ours.
echo "leak:libdbus-1.so" > "$d/lsan.supp"
export LSAN_OPTIONS="suppressions=$d/lsan.supp${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
sleep 1
"$exe" demo-data --db "$d/demo.db" --today 23/11/2026 >/dev/null 2>&1
awk -v seed="$seed" 'BEGIN { srand(seed); for (i = 0; i < 1000000; i++) print int(rand() * 2147483647) }' > "$d/r"
start() {
    "$exe" gui --db "$d/demo.db" --today 23/11/2026 2>"$d/err" &
    app=$!
    sleep 2
}
start
actions=0 crashes=0 exits=0 end=$(($(date +%s) + seconds))
exec 3<"$d/r"
rnd() { read -r n <&3; echo $((n % $1)); }
while [ "$(date +%s)" -lt "$end" ]; do
    if ! kill -0 $app 2>/dev/null; then
        wait $app; status=$?
        if [ $status -eq 0 ]; then
            exits=$((exits + 1))  # the user left by the screen's own button
        else
            crashes=$((crashes + 1))
            echo "death $crashes after $actions actions: status $status"; tail -n 5 "$d/err"
        fi
        start
    fi
    x=$(rnd 1100) y=$(rnd 800)
    case $(rnd 8) in
        0|1) xdotool mousemove $((x + 20)) $((y + 40)) click 1 ;;
        2) case $(rnd 6) in
               0) text=001 ;; 1) text=23/11/2026 ;; 2) text=30/11 ;; 3) text="O'BRIEN\"; --" ;;
               4) text=LUNDI ;; *) text=999 ;;
           esac
           xdotool type --delay 5 "$text" ;;
        3) case $(rnd 5) in
               0) k=Tab ;; 1) k=Escape ;; 2) k=BackSpace ;; 3) k=Delete ;; *) k=Down ;;
           esac
           xdotool key $k ;;
        4) xdotool mousemove $((x + 20)) $((y + 40)) mousedown 1 mousemove $(($(rnd 1100) + 20)) $(($(rnd 800) + 40)) mouseup 1 ;;
        5) xdotool mousemove $((x + 20)) $((y + 40)) click 3 ;;
        6) xdotool key Return ;;
        *) xdotool mousemove $((x + 20)) $((y + 40)) click --repeat 2 1 ;;
    esac
    actions=$((actions + 1))
done
echo "gui_monkey: $actions actions in ${seconds}s, $exits exits by the screen, $crashes deaths"
[ "$crashes" -eq 0 ]
