# A signal at any moment of a rendering whose recording stalls.
# statuses: 129 130 143
. "$hostile/lib.bash"
a_recording 100000 in.wav
mkfifo stalled
exec 3<>stalled
head -c 60000 in.wav >&3
"${background[@]}" render --patch p.json - out.wav <&3 3>&- &
a_moment
end_by "$(pick INT TERM HUP)" $!
status=$?
[ ! -e out.wav ] || exit 92
exit $status
