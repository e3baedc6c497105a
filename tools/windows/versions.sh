# What the Windows build is made of: Debian's source packages by version, and the release that Wine
# comes from. A version that the mirror no longer has is to be raised here. Sourced.

debian_suite=bookworm

declare -A source_version=(
    [libsodium]=1.0.18-1+deb12u1
    [srt]=1.5.1-1+deb12u1
    [x264]=2:0.164.3095+gitbaee400-3
    [ffmpeg]=7:5.1.9-0+deb12u1
    [qtbase-opensource-src]=5.15.8+dfsg-11+deb12u3
    [qtmultimedia-opensource-src]=5.15.8-2
)
