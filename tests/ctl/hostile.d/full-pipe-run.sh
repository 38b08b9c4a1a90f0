# A signal at any moment of a run whose standard output is a full pipe. The status is 0 if the signal comes
# while the run still waits for its device.
# statuses: 0 130 131 143
. "$hostile/lib.bash"
mkfifo full
exec 3<>full
fill full
"${background[@]}" run --patch p.json --device "$device" --meters >&3 &
a_moment
end_by "$(pick INT TERM QUIT)" $!
