# shellcheck shell=bash
# What the client keeps of its cameras and groups, written as it would write it. Sourced by
# the demo and the maker of pictures.

# write_camera FILE ID UID NAME PASSWORD
write_camera() {
    cat >"$1" <<XML
<?xml version="1.0" encoding="UTF-8"?>
<KvTUTKDevice>
    <deviceId>$2</deviceId>
    <name>$4</name>
    <ip></ip>
    <uid>$3</uid>
    <password>$5</password>
    <port>0</port>
    <mode>0</mode>
    <volume>1</volume>
</KvTUTKDevice>
XML
}

# write_entry FILE ID TYPE LAYOUT INDEX NAME UID...
write_entry() {
    local file=$1 id=$2 type=$3 layout=$4 index=$5 name=$6
    shift 6
    {
        cat <<XML
<?xml version="1.0" encoding="UTF-8"?>
<KvDeviceGroup>
    <groupId>$id</groupId>
    <type>$type</type>
    <layout>$layout</layout>
    <groupIndex>$index</groupIndex>
    <name>$name</name>
    <uids count="$#">
XML
        printf '        <uid>%s</uid>\n' "$@"
        printf '    </uids>\n</KvDeviceGroup>\n'
    } >"$file"
}
