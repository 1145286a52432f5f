# Writes what CHANGELOG.md says of each release in the form that another reader wants.
#
#   awk -v form=debian -v package=NAME -v maintainer="NAME <ADDRESS>" -f changelog.awk CHANGELOG.md
#   awk -v form=metainfo -f changelog.awk CHANGELOG.md
#
# A release is a heading "## 1.2.3 - 2026-01-31" and the paragraphs and points below it. Headings of
# any other form, such as "## Unreleased", and what stands below them are left out.

function weekday(year, month, day,    offset) {
    split("0 3 2 5 0 3 5 1 4 6 2 4", offset, " ")
    if (month < 3)
        --year
    return substr("SunMonTueWedThuFriSat",
                  (year + int(year / 4) - int(year / 100) + int(year / 400) + offset[month] + day) % 7 * 3 + 1, 3)
}

# Prints the text collected so far as one point, in lines of at most 78 characters.
function end_point(    words, count, i, line) {
    count = split(point, words, " ")
    line = "  *"
    for (i = 1; i <= count; ++i) {
        if (length(line) + 1 + length(words[i]) > 78) {
            print line
            line = "   "
        }
        line = line " " words[i]
    }
    if (count > 0)
        print line
    point = ""
}

function end_release(    part) {
    if (version != "" && form == "debian") {
        end_point()
        split(date, part, "-")
        printf "\n -- %s  %s, %s %s %s 00:00:00 +0000\n\n", maintainer,
            weekday(part[1] + 0, part[2] + 0, part[3] + 0), part[3],
            substr("JanFebMarAprMayJunJulAugSepOctNovDec", part[2] * 3 - 2, 3), part[1]
    }
    version = ""
}

/^## / {
    end_release()
    if ($0 !~ /^## [0-9.]+ - [0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9]$/)
        next
    version = $2
    date = $4
    if (form == "metainfo")
        printf "    <release version=\"%s\" date=\"%s\"/>\n", version, date
    else
        printf "%s (%s) stable; urgency=medium\n\n", package, version
    next
}

version == "" || form == "metainfo" { next }
/^[ \t]*$/ || /^- / { end_point() }
{ sub(/^- /, ""); point = point " " $0 }

END { end_release() }
