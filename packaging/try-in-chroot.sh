#!/bin/sh
# Tries the package as an operator would, in a fresh Debian 12 made by debootstrap: install, log in as
# an unprivileged member of the operators' group against the installed simulator, change the language,
# end the session, then upgrade, remove and purge, checking what stays. Needs root and a Debian 12
# mirror: the one given, else the one this machine's own apt sources name for bookworm.
# usage: packaging/try-in-chroot.sh ROOT OLD.deb NEW.deb [MIRROR]
set -eu
root=$1 old=$(realpath "$2") new=$(realpath "$3")

# The first bookworm source of this machine, from one-line lists ("deb [options] URI SUITE ...") or
# from stanzas of .sources files ("URIs:", "Suites:").
mirror_of_this_machine() {
    for f in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [ -r "$f" ] || continue
        awk '$1 == "deb" { sub(/^[ \t]*deb[ \t]+(\[[^]]*\][ \t]+)?/, ""); if ($2 == "bookworm") { print $1; exit } }' "$f"
    done
    for f in /etc/apt/sources.list.d/*.sources; do
        [ -r "$f" ] || continue
        awk 'function end() { if (deb && suite && uri != "") { print uri; found = 1; exit } deb = suite = 0; uri = "" }
             /^[ \t]*#/ { next }
             /^[ \t]*$/ { end(); next }
             $1 == "Types:" { for (i = 2; i <= NF; i++) if ($i == "deb") deb = 1 }
             $1 == "URIs:" { uri = $2 }
             $1 == "Suites:" { for (i = 2; i <= NF; i++) if ($i == "bookworm") suite = 1 }
             END { if (!found) end() }' "$f"
    done
}
mirror=${4:-$(mirror_of_this_machine | head -n 1)}
if [ -z "$mirror" ]; then
    echo "No bookworm source in this machine's apt sources: give the mirror as the fourth argument." >&2
    exit 2
fi
[ -d "$root/etc" ] || debootstrap --variant=minbase bookworm "$root" "$mirror"
mountpoint -q "$root/proc" || mount -t proc proc "$root/proc"
mountpoint -q "$root/dev" || mount --bind /dev "$root/dev"
mountpoint -q "$root/dev/pts" || mount --bind /dev/pts "$root/dev/pts"
cp /etc/resolv.conf "$root/etc/"
cp "$old" "$root/tmp/old.deb"
cp "$new" "$root/tmp/new.deb"
run_in() { chroot "$root" sh -c "$1"; }
state=/var/lib/orvaplccom

run_in "apt-get update -q > /dev/null"
run_in "DEBIAN_FRONTEND=noninteractive apt-get install -y -q xvfb xauth xdotool x11-apps > /dev/null"
run_in "DEBIAN_FRONTEND=noninteractive apt-get install -y -q /tmp/old.deb > /dev/null"
run_in "id op > /dev/null 2>&1 || useradd -m -G orvaplccom,dialout op"

# The operator's session: the simulator, the console, the access code, English, and the window closed.
cat > "$root/tmp/session.sh" <<'EOS'
#!/bin/sh
set -eu
cd /tmp
rm -f /tmp/ttyPLC
orvaplcsim --link /tmp/ttyPLC > /tmp/sim.out &
sim=$!
while [ ! -e /tmp/ttyPLC ]; do sleep 0.1; done
printf '[ComPorts]\r\nCom2=/tmp/ttyPLC\r\n' > /var/lib/orvaplccom/Data/ComPorts.ini
orvaplccom &
con=$!
sleep 4
xdotool search --sync --name . > /dev/null
xwd -root -silent > /tmp/login.xwd
# No window manager: the pointer gives the focus. The language list, one step down: English.
xdotool mousemove 465 290 click 1
sleep 1
xdotool key Down Return
sleep 1
xdotool mousemove 465 198 click 1
xdotool type --delay 50 48213
xdotool key Return
sleep 2
xwd -root -silent > /tmp/menu.xwd
kill -TERM $con
wait $con || true
kill $sim
EOS
chmod 755 "$root/tmp/session.sh"
run_in "su op -c 'xvfb-run -a -s \"-screen 0 1280x800x24\" /tmp/session.sh'"
run_in "ls -la $state/Data $state/Lang $state/ProgramErr"
run_in "test -s $state/Data/BLZConfig.dat && echo 'configuration saved by the operator'"
run_in "grep -a LANSEL $state/Lang/PLCCOMLANSEL.ini"

run_in "DEBIAN_FRONTEND=noninteractive apt-get install -y -q /tmp/new.deb > /dev/null"
run_in "test -s $state/Data/BLZConfig.dat && echo 'upgrade kept the configuration'"
run_in "DEBIAN_FRONTEND=noninteractive apt-get remove -y -q orvaplccom > /dev/null"
run_in "test -s $state/Data/BLZConfig.dat && echo 'remove kept the configuration'"
run_in "DEBIAN_FRONTEND=noninteractive apt-get install -y -q /tmp/new.deb > /dev/null"
run_in "DEBIAN_FRONTEND=noninteractive apt-get purge -y -q orvaplccom > /dev/null"
run_in "test ! -e $state && echo 'purge removed the operators files'"
