# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
#
# The changes that dev/mutate makes: which single-line changes apply to a source, by
# the kind of the file. Each change belongs to a kind, such as "constant" or "margin",
# by which the scores are listed.

package mutation_changes;

use strict;
use warnings;
no warnings 'portable';
use Exporter 'import';
our @EXPORT_OK = qw(changesOf linesOf nameOf);

# The operators for a file: a function that gets all lines of the file and the number
# of one of them, and returns [kind, line...] for every change: the lines that take the
# place of as many lines from that number on.
sub operatorsFor {
    my ($path) = @_;
    return \&cppChanges      if $path =~ /\.(cpp|h)$/;
    return \&ppdChanges      if $path =~ /\.(drv|defs)$/;
    return \&poChanges       if $path =~ /\.po$/;
    return \&controlChanges  if $path =~ m{/control$};
    return \&installChanges  if $path =~ /CMakeLists\.txt$/;
    return \&listChanges     if $path =~ /\.install$/;
    return \&rulesChanges    if $path =~ m{/rules$};
    return \&settingChanges  if $path =~ /\.(service|tmpfiles|default)$/;
    return \&shellChanges;
}

# 64-bit FNV-1a: gives an order that is the same on every machine and unrelated to
# what a change does.
sub hashOf {
    my ($text) = @_;
    use integer;
    my $hash = -3750763034362895579;
    for my $byte (unpack 'C*', $text) { $hash = ($hash ^ $byte) * 1099511628211; }
    return sprintf '%016x', $hash;
}

sub linesOf {
    my ($path) = @_;
    open my $in, '<', $path or die "mutate: $path: $!\n";
    my @lines = <$in>;
    chomp @lines;
    return \@lines;
}

sub oneLine { my ($text) = @_; $text =~ s/\s*\n\s*/ \/ /g; $text =~ s/^\s+|\s+$//g; return $text; }

sub nameOf {
    my ($change) = @_;
    my $after = oneLine($change->{after});
    my $place = $change->{place} == 1 ? '' : " [place $change->{place}]";
    return "$change->{path}: " . oneLine($change->{before}) . ' => ' . ($after =~ /^[\s\/]*$/ ? '(left out)' : $after) . $place;
}

# Every change that applies to a source file. SEED, if it is not empty, gives another order.
sub changesOf {
    my ($path, $seed) = @_;
    my $lines     = linesOf($path);
    my $operators = operatorsFor($path);
    my (@changes, %seen);
    for my $n (0 .. $#$lines) {
        for my $row ($operators->($lines, $n)) {
            my ($kind, @new) = @$row;
            my $before = join "\n", @$lines[$n .. $n + $#new];
            my $after  = join "\n", @new;
            next if $before eq $after;
            my $key = join "\t", $path, map { s/\s+/ /gr } $before, $after;
            # The same text can occur more than once in a file; each occurrence is a change of its own.
            my $place = ++$seen{$key};
            push @changes, {path => $path, line => $n, length => scalar @new, before => $before, kind => $kind,
                            after => $after, place => $place, hash => hashOf("$seed$key\t$place")};
        }
    }
    return @changes;
}

sub replaceAt {
    my ($line, $at, $length, $text) = @_;
    substr($line, $at, $length) = $text;
    return $line;
}

# ---------------------------------------------------------------- C++

# The line with everything that must not be changed replaced by blanks: string
# literals, comments, template arguments. The columns stay the same.
sub codeOf {
    my ($line) = @_;
    return '' if $line =~ /^\s*(#|\/\/|static_assert|template|using |namespace |friend |enum |\})/;
    my $blank = sub { ' ' x length $_[0] };
    $line =~ s/("(?:[^"\\]|\\.)*"|'(?:[^'\\]|\\.)+'(?!\d))/$blank->($1)/ge;
    $line =~ s/(\/\/.*)$/$blank->($1)/e;
    $line =~ s/(?<=\w)(<[\w:*& ,<>]*>)/$blank->($1)/ge;
    return $line;
}

my @kOperators = (
    [' < '  => ' <= '], [' <= ' => ' < '],
    [' > '  => ' >= '], [' >= ' => ' > '],
    [' == ' => ' != '], [' != ' => ' == '],
    [' + '  => ' - '],  [' - '  => ' + '],
    [' * '  => ' / '],  [' / '  => ' * '], [' % ' => ' / '],
    [' && ' => ' || '], [' || ' => ' && '],
    [' & '  => ' | '],  [' | '  => ' & '], [' ^ ' => ' & '],
    [' << ' => ' >> '], [' >> ' => ' << '],
    [' += ' => ' -= '], [' -= ' => ' += '], [' |= ' => ' &= '],
);

sub operatorChanges {
    my ($line, $code) = @_;
    my @changes;
    for my $row (@kOperators) {
        my ($from, $to) = @$row;
        my $at = -1;
        while (($at = index $code, $from, $at + 1) >= 0) { push @changes, replaceAt($line, $at, length $from, $to); }
    }
    while ($code =~ /(?<=[(\s!])!(?=[\w(])/g) { push @changes, replaceAt($line, $-[0], 1, ''); }
    while ($code =~ /\b(true|false)\b/g) {
        push @changes, replaceAt($line, $-[0], length $1, $1 eq 'true' ? 'false' : 'true');
    }
    while ($code =~ /(\+\+|--)/g) { push @changes, replaceAt($line, $-[0], 2, $1 eq '++' ? '--' : '++'); }
    return @changes;
}

# One more than an integer; one hundredth more than a fraction.
sub otherConstant {
    my ($text) = @_;
    return sprintf '0x%0*X', length($1), hex($1) + 1 if $text =~ /^0[xX]([0-9A-Fa-f]+)$/;
    return $text + 1 if $text =~ /^\d+$/;
    my $changed = sprintf '%.9g', $text * 1.01;
    return $changed =~ /[.e]/ ? $changed : "$changed.0";
}

sub constantChanges {
    my ($line, $code) = @_;
    my @changes;
    while ($code =~ /(?<![\w.])(0[xX][0-9A-Fa-f]+|\d+\.\d+(?:e-?\d+)?|\d+)(?=[uUlLfF]*(?![\w.']))/g) {
        my ($text, $at) = ($1, $-[0]);
        next if $text =~ /^\d+\.\d+/ && $text == 0;
        push @changes, replaceAt($line, $at, length $text, otherConstant($text));
    }
    return @changes;
}

# A whole statement on one line that can be left out without a compile error: a call,
# an assignment, an increment, a guard.
sub isDroppable {
    my ($code) = @_;
    return $code =~ /^\s+[A-Za-z_][\w:.>()\[\]*-]*(\(.*\)|( [-+*\/|&^%<>]*= ).*|\+\+|--);$/
        || $code =~ /^\s+(\+\+|--)[A-Za-z_]\w*;$/
        || $code =~ /^\s+if \(.*\) (return|continue|break).*;$/;
}

sub cppChanges {
    my ($lines, $n) = @_;
    my $line = $lines->[$n];
    my $code = codeOf($line);
    my $next = $n < $#$lines ? $lines->[$n + 1] : '';
    my @new  = map { ['operator', $_] } operatorChanges($line, $code);
    push @new, map { ['constant', $_] } constantChanges($line, $code);
    my $opensStatement = $n == 0 || $lines->[$n - 1] =~ /[;{}:]\s*(\/\/.*)?$|^\s*$/;
    if ($opensStatement && isDroppable($code)) {
        push @new, ['left out', ''] if $code !~ /^\s+return/;
        my ($indent) = $line =~ /^(\s*)/;
        push @new, ['order', $next, $line]
            if isDroppable(codeOf($next)) && $next =~ /^$indent\S/ && $next ne $line && $next !~ /^\s+if /
            && $line !~ /^\s+if /;
    }
    return @new;
}

# ---------------------------------------------------------------- the PPDs

sub ppdChanges {
    my ($lines, $n) = @_;
    my $line = $lines->[$n];
    my $next = $n < $#$lines ? $lines->[$n + 1] : '';
    my @new;
    if ($line =~ m{^ *(\*?)Choice "([^/"]+)/([^"]+)"}) {
        my ($mark, $name, $text) = ($1, $2, $3);
        push @new, ['choice', $line =~ s{"(-?\d+)/}{'"' . ($1 + 1) . '/'}er] if $name =~ /^-?\d+$/;
        if ($next =~ m{^ *(\*?)Choice "([^/"]+)/([^"]+)"}) {
            my ($nextMark, $nextName, $nextText) = ($1, $2, $3);
            push @new, ['default', "  ${nextMark}Choice \"$name/$text\" \"\"", "  ${mark}Choice \"$nextName/$nextText\" \"\""]
                if $mark ne $nextMark;
            push @new, ['text', "  ${mark}Choice \"$name/$nextText\" \"\"", "  ${nextMark}Choice \"$nextName/$text\" \"\""];
        }
    }
    if ($line =~ /^ *(\*?)MediaSize (\w+)$/) {
        my ($mark, $name) = ($1, $2);
        push @new, ['size', ''] if $mark eq '';
        push @new, ['default', "  ${1}MediaSize $name", "  ${mark}MediaSize $2"]
            if $next =~ /^ *(\*?)MediaSize (\w+)$/ && $1 ne $mark;
    }
    if ($line =~ /^(#media "[^"]+") (\d+)mm (\d+)mm$/) {
        push @new, ['size', "$1 " . ($2 + 1) . "mm $3mm"], ['size', "$1 $2mm " . ($3 + 1) . 'mm'];
    }
    my $kind = $line =~ /^ *HWMargins / ? 'margin' : $line =~ /^ *M(in|ax)Size / ? 'size' : undef;
    if (defined $kind) {
        while ($line =~ /(?<= )([\d.]+)/g) { push @new, [$kind, replaceAt($line, $-[0], length $1, $1 + 1)]; }
    }
    push @new, ['attribute', ''] if $line =~ /^ *\*?(Attribute|ManualCopies|VariablePaperSize|ColorModel|Resolution|ModelNumber|ModelName|Manufacturer) /;
    push @new, ['attribute', ''] if $line =~ /^Group /;
    return @new;
}

# The translations of two texts that follow each other are swapped.
sub poChanges {
    my ($lines, $n) = @_;
    return if $n + 3 > $#$lines || $lines->[$n] !~ /^msgstr "./ || $lines->[$n + 3] !~ /^msgstr "./;
    return ['translation', @$lines[$n + 3, $n + 1, $n + 2, $n]];
}

# ---------------------------------------------------------------- shell

my $kKeywords = qr/if|then|else|elif|fi|do|done|for|while|until|case|esac|in|local|readonly|return|exit|function|break|continue|shift|set|source/;

# The line with strings, comments and redirections replaced by blanks.
sub shellCodeOf {
    my ($line) = @_;
    return '' if $line =~ /^\s*#/;
    my $blank = sub { ' ' x length $_[0] };
    $line =~ s/("(?:[^"\\]|\\.)*"|'[^']*')/$blank->($1)/ge;
    $line =~ s/((?:^|\s)#.*)$/$blank->($1)/e;
    return $line;
}

# Whether line N lies in a here-document.
sub inHereDocument {
    my ($lines, $n) = @_;
    my $end;
    for my $line (@$lines[0 .. $n - 1]) {
        if (defined $end) { undef $end if $line =~ /^\t*\Q$end\E$/; }
        elsif ($line =~ /<<-?['"]?(\w+)['"]?/ && $line !~ /<<</) { $end = $1; }
    }
    return defined $end;
}

sub shellChanges {
    my ($lines, $n) = @_;
    return if $n == 0 || inHereDocument($lines, $n);
    my ($line, $previous) = @$lines[$n, $n - 1];
    my $code = shellCodeOf($line);
    my @new;
    if ($code =~ /^(\s*(?:if|elif|while|until) )(! )?/) {
        push @new, ['test', replaceAt($line, length $1, length($2 // ''), defined $2 ? '' : '! ')];
    } elsif ($code =~ /^(\s*)(! )?(\[\[|\(\()/) {
        push @new, ['test', replaceAt($line, length $1, length($2 // ''), defined $2 ? '' : '! ')];
    }
    my @swaps = ([' && ' => ' || '], [' || ' => ' && '], [' == ' => ' != '], [' != ' => ' == '], [' -z ' => ' -n '], [' -n ' => ' -z ']);
    for my $row (@swaps) {
        my ($from, $to) = @$row;
        my $at = -1;
        while (($at = index $code, $from, $at + 1) >= 0) { push @new, ['test', replaceAt($line, $at, length $from, $to)]; }
    }
    my ($tried) = $line =~ /^(.*?) \|\| (?:fail|fail_\w+|die|return|exit)\b/;
    push @new, ['status', "$tried || true"] if defined $tried && $code =~ / \|\| [a-z]/ && $line !~ /\\$/;
    push @new, ['status', $line =~ s/"\$STATUS_\w+"/0/r] if $line =~ /"\$STATUS_\w+"/;
    push @new, ['status', replaceAt($line, $-[1], length $1, $1 + 1)] if $code =~ /\b(?:return|exit) (\d+)/;
    push @new, ['status', replaceAt($line, $-[1], 1, '')] if $code =~ /^set -(e)u/;
    my $commands = $code =~ s/(\[\[.*?\]\]|\(\(.*?\)\))/' ' x length $1/ger;
    while ($commands =~ /(?<= )(--?[a-z][\w-]*(?:=\S*)?)(?= |$)/g) {
        push @new, ['option', replaceAt($line, $-[0] - 1, length($1) + 1, '')] if $line !~ /^\s*(set|local|case|-)/;
    }
    push @new, ['left out', "$1:"]
        if $code =~ /^(\s+)[a-z_][\w-]*( [^|&;{]*)?$/ && $code !~ /^\s+(?:$kKeywords)\b/ && $line !~ /\\$|[=(]$/
        && $previous !~ /(\\|\|\||&&|\||\()$/;
    push @new, ['left out', ''] if $line =~ /^\s+[\w=\$"\/.-]+=\S*$/ && $previous !~ /\\$/;
    return @new;
}

# ---------------------------------------------------------------- packages and install rules

sub controlChanges {
    my ($lines, $n) = @_;
    my $line = $lines->[$n];
    return ['dependency', ''] if $line =~ /^ (?!\$)[a-z][a-z0-9+.-]*( \(.*\)|:\w+)?,$/ || $line =~ /^(Recommends|Suggests):/;
    return ['architecture', 'Architecture: all'] if $line eq 'Architecture: any';
    return;
}

sub installChanges {
    my ($lines, $n) = @_;
    my $line = $lines->[$n];
    my @new;
    if ($line =~ /^\s*install\(/) {
        push @new, ['mode', $line =~ s/install\(PROGRAMS/install(FILES/r] if $line =~ /install\(PROGRAMS/;
        push @new, ['mode', $line =~ s/install\(FILES/install(PROGRAMS/r] if $line =~ /install\(FILES/;
        push @new, ['file', map { '' } 0 .. ($line =~ /\)$/ ? 0 : 1)];
        push @new, ['path', $line =~ s/ RENAME \w+//r] if $line =~ / RENAME \w/;
        push @new, ['package', $line =~ s/ COMPONENT \w+//r] if $line =~ / COMPONENT /;
    }
    push @new, ['path', $line =~ s/(DESTINATION [^\s)]+)/$1x/r] if $line =~ /DESTINATION /;
    return @new;
}

sub listChanges {
    my ($lines, $n) = @_;
    return ['file', ''], ['path', "$lines->[$n] usr/share/wren"];
}

sub rulesChanges {
    my ($lines, $n) = @_;
    my $line = $lines->[$n];
    return ['rule', ''] if $line =~ /^(export|override_\w+:$|include)/;
    my @new;
    while ($line =~ /(?<= )(--?[\w=+-]+)/g) { push @new, ['rule', replaceAt($line, $-[0] - 1, length($1) + 1, '')] if $1 ne '--'; }
    return @new;
}

# A setting of a service: left out, or yes and no changed over.
sub settingChanges {
    my ($lines, $n) = @_;
    my $line = $lines->[$n];
    return if $line =~ /^\s*(#|\[|$)/;
    my @new = (['setting', '']);
    push @new, ['setting', $line =~ s/=yes$/=no/r] if $line =~ /=yes$/;
    push @new, ['setting', $line =~ s/(\d+)(?!.*\d)/$1 + 1/er] if $line =~ /=.*\d/;
    return @new;
}

1;
