# Sourced by scripts/test.sh: a private CUPS server for the printing tests.
# Own config, spool, state and backend folders under one temp folder, a port on
# 127.0.0.1 and a socket of its own; two text queues whose jobs land as files in
# $QUMBREL_CUPS_OUT (<queue>-<job>.pdf and the job's options in <queue>-<job>.options).
# The system's CUPS (if any) is not touched. Without cupsd the printing tests skip.

cups_test_stop() {
    if [[ -n "${QUMBREL_CUPS_PID:-}" ]]; then
        kill -TERM "$QUMBREL_CUPS_PID" 2>/dev/null || true
        for _ in $(seq 50); do
            kill -0 "$QUMBREL_CUPS_PID" 2>/dev/null || break
            sleep 0.1
        done
        kill -KILL "$QUMBREL_CUPS_PID" 2>/dev/null || true
        unset QUMBREL_CUPS_PID
    fi
    if [[ -n "${QUMBREL_CUPS_DIR:-}" && -d "$QUMBREL_CUPS_DIR" ]]; then
        rm -rf -- "$QUMBREL_CUPS_DIR"
    fi
    unset CUPS_SERVER QUMBREL_CUPS_DIR QUMBREL_CUPS_OUT QUMBREL_CUPS_QUEUES
}

cups_test_start() {
    local cupsd_bin
    cupsd_bin="$(command -v cupsd || true)"
    [[ -z "$cupsd_bin" && -x /usr/sbin/cupsd ]] && cupsd_bin=/usr/sbin/cupsd
    if [[ -z "$cupsd_bin" || ! -d /usr/lib/cups/filter ]]; then
        echo "cups: cupsd not installed; the printing tests will skip"
        return 0
    fi
    if [[ $(id -u) -ne 0 ]]; then
        echo "cups: not root; a private cupsd needs root for its backend; printing tests skip"
        return 0
    fi

    local dir
    dir="$(mktemp -d /tmp/qumbrel-cups.XXXXXX)"
    chmod 755 "$dir"  # the filters run as lp and must reach the spool
    QUMBREL_CUPS_DIR="$dir"
    mkdir -p "$dir"/{conf,spool,spool/tmp,cache,state,log,out,serverbin/backend}
    chmod 755 "$dir/out"

    # The system's filters and backends, plus a backend of ours that files each job.
    local d
    for d in /usr/lib/cups/*; do
        [[ "$(basename "$d")" == backend ]] && continue
        ln -s "$d" "$dir/serverbin/$(basename "$d")"
    done
    for d in /usr/lib/cups/backend/*; do
        ln -s "$d" "$dir/serverbin/backend/$(basename "$d")"
    done
    cat >"$dir/serverbin/backend/qtest" <<'BACKEND'
#!/bin/sh
# qtest:/folder - files each job as <queue>-<job>.pdf with its options beside it.
if [ $# -eq 0 ]; then
    echo 'direct qtest "Unknown" "Qumbrel test queue"'
    exit 0
fi
out="${DEVICE_URI#qtest:}"
base="$out/$PRINTER-$1"
printf '%s\n' "$5" >"$base.options"
if [ -n "$6" ]; then cp "$6" "$base.part"; else cat >"$base.part"; fi
mv "$base.part" "$base.pdf"
exit 0
BACKEND
    chmod 700 "$dir/serverbin/backend/qtest"  # 0700: cupsd runs it as root

    cat >"$dir/conf/qtest.ppd" <<'PPD'
*PPD-Adobe: "4.3"
*FormatVersion: "4.3"
*FileVersion: "1.0"
*LanguageVersion: English
*LanguageEncoding: ISOLatin1
*PCFileName: "QTEST.PPD"
*Manufacturer: "Qumbrel"
*Product: "(Qumbrel test queue)"
*ModelName: "Qumbrel test queue"
*ShortNickName: "Qumbrel test queue"
*NickName: "Qumbrel test queue"
*PSVersion: "(3010.000) 0"
*LanguageLevel: "3"
*ColorDevice: False
*DefaultColorSpace: Gray
*FileSystem: False
*Throughput: "1"
*LandscapeOrientation: Plus90
*TTRasterizer: Type42
*cupsFilter2: "application/vnd.cups-pdf application/pdf 0 -"
*OpenUI *PageSize: PickOne
*OrderDependency: 10 AnySetup *PageSize
*DefaultPageSize: A4
*PageSize A4/A4: "<</PageSize[595 842]>>setpagedevice"
*CloseUI: *PageSize
*OpenUI *PageRegion: PickOne
*OrderDependency: 10 AnySetup *PageRegion
*DefaultPageRegion: A4
*PageRegion A4/A4: "<</PageSize[595 842]>>setpagedevice"
*CloseUI: *PageRegion
*DefaultImageableArea: A4
*ImageableArea A4/A4: "18 36 577 806"
*DefaultPaperDimension: A4
*PaperDimension A4/A4: "595 842"
PPD

    local port=$((20000 + RANDOM % 20000))
    cat >"$dir/conf/cupsd.conf" <<CONF
Listen 127.0.0.1:$port
Listen $dir/cups.sock
LogLevel warn
WebInterface No
Browsing No
DefaultAuthType None
PreserveJobFiles Yes
<Location />
  Order allow,deny
  Allow all
</Location>
<Policy default>
  <Limit All>
    Order deny,allow
  </Limit>
</Policy>
CONF
    cat >"$dir/conf/cups-files.conf" <<CONF
ServerRoot $dir/conf
RequestRoot $dir/spool
TempDir $dir/spool/tmp
CacheDir $dir/cache
StateDir $dir/state
ServerBin $dir/serverbin
AccessLog $dir/log/access_log
ErrorLog $dir/log/error_log
PageLog $dir/log/page_log
FileDevice No
Sandboxing Relaxed
CONF

    "$cupsd_bin" -c "$dir/conf/cupsd.conf" -s "$dir/conf/cups-files.conf" -f \
        </dev/null >"$dir/log/cupsd.out" 2>&1 &
    QUMBREL_CUPS_PID=$!
    cleanup_fns+=(cups_test_stop)
    export CUPS_SERVER="127.0.0.1:$port"

    local up=0
    for _ in $(seq 100); do
        if [[ "$(lpstat -r 2>/dev/null || true)" == *"is running"* ]]; then
            up=1
            break
        fi
        sleep 0.1
    done
    if ((up == 0)); then
        echo "cups: private cupsd did not start; see below. The printing tests will skip"
        cat "$dir/log/cupsd.out" "$dir/log/error_log" 2>/dev/null || true
        cups_test_stop
        return 0
    fi
    local q
    for q in qumbrel_test_a qumbrel_test_b; do
        # (lpadmin warns that PPD drivers are deprecated; they still work in CUPS 2.4)
        if ! lpadmin -p "$q" -E -v "qtest:$dir/out" -P "$dir/conf/qtest.ppd" \
            -o printer-error-policy=abort-job 2>/dev/null; then
            echo "cups: cannot create the test queue $q; the printing tests will skip"
            cups_test_stop
            return 0
        fi
    done
    export QUMBREL_CUPS_DIR QUMBREL_CUPS_PID
    export QUMBREL_CUPS_OUT="$dir/out"
    export QUMBREL_CUPS_QUEUES="qumbrel_test_a qumbrel_test_b"
    echo "cups: private server on $CUPS_SERVER (pid $QUMBREL_CUPS_PID), queues $QUMBREL_CUPS_QUEUES"
}

cups_test_start
