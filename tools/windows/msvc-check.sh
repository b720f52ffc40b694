#!/usr/bin/env bash
# Reads all sources of the Windows build the way Microsoft's compiler would, as far as that goes without its
# headers: clang in MSVC's mode, with MinGW's headers in their place. Finds GNU extensions, declarations that only
# GCC accepts, and types whose size differs.
set -euo pipefail
cd "$(dirname "$0")/../.."

build=build/windows
[[ -e $build/compile_commands.json ]] || { echo "Build the preset windows first: ./test --windows" >&2; exit 1; }
gcc=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-libgcc-file-name)")

check() {
    local file=$1 gcc=$2
    local options=()
    # Of the build's command the definitions and the folders of headers count.
    mapfile -t options < <(perl -MJSON::PP -e '
        local $/;
        open my $json, "<", "build/windows/compile_commands.json" or die;
        for my $entry (@{decode_json(<$json>)}) {
            next unless $entry->{file} eq $ARGV[0];
            my @words = map { s/\\(.)/$1/gr } split " ", $entry->{command};
            while (@words) {
                my $word = shift @words;
                print "$word\n" if $word =~ /^-[DI]/;
                print "-isystem\n", shift @words, "\n" if $word eq "-isystem";
            }
            last;
        }' "$file")
    clang++ --target=x86_64-pc-windows-msvc -fsyntax-only -std=c++17 -fms-compatibility-version=19.29 \
        -Wall -Wextra -Wpedantic -Wmicrosoft -Wgnu -Wshorten-64-to-32 -Wimplicit-int-conversion -Wimplicit-float-conversion \
        -Werror \
        -Wno-deprecated-declarations -Wno-gnu-zero-variadic-macro-arguments `# FFmpeg's old names; Qt's own macros` \
        -include tools/windows/msvc_mode.h -nostdinc++ "${options[@]}" \
        -isystem "$gcc/include/c++" -isystem "$gcc/include/c++/x86_64-w64-mingw32" \
        -isystem /usr/x86_64-w64-mingw32/include "$file" || {
        echo "not clean: $file" >&2
        return 1
    }
}
export -f check

if (($#)); then files=("$@"); else mapfile -t files < <(perl -MJSON::PP -e '
    local $/;
    open my $json, "<", "build/windows/compile_commands.json" or die;
    my %seen;
    print "$_\n" for grep { !$seen{$_}++ } map { $_->{file} } @{decode_json(<$json>)};' | grep -v _autogen); fi
printf '%s\0' "${files[@]}" | xargs -0 -P "$(nproc)" -I{} bash -c 'check "$@"' - {} "$gcc"
echo "${#files[@]} sources read in MSVC's mode"
