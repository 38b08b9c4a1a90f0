# A signal at any moment of a run whose standard output is a full pipe. While it looks for its device it ends with 0.
# statuses: 0 130 131 143
. "$hostile/lib.bash"
mkfifo full
exec 3<>full
fill full
"${background[@]}" run --patch p.json --device "$device" --meters >&3 &
a_moment
end_by "$(pick INT TERM QUIT)" $!
