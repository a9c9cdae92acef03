#!/usr/bin/perl
# Writes unicode_tables.cpp from the character database that comes with perl:
#     perl tools/make_unicode_tables.pl > unicode_tables.cpp
use strict;
use warnings;
use Unicode::UCD qw(casefold charinfo);

my (@letters, %fold, %upper, %lower);
for my $code (0x80 .. 0x323AF) {
    next if $code >= 0xD800 && $code <= 0xDFFF;
    my $character = chr $code;
    if ($character =~ /[\p{L}\p{Nl}]/) {
        if (@letters && $letters[-1][1] == $code - 1) { $letters[-1][1] = $code }
        else { push @letters, [$code, $code] }
    }
    next unless $character =~ /[\p{Changes_When_Casemapped}\p{Changes_When_Casefolded}\p{Lu}\p{Lt}]/;
    my $folding = casefold($code);
    $fold{$code} = hex $folding->{simple} if $folding && $folding->{simple} ne '';
    my $info = charinfo($code);
    $upper{$code} = hex $info->{upper} if $info->{upper} ne '';
    $lower{$code} = hex $info->{lower} if $info->{lower} ne '';
}

# Joins neighbours that move by the same distance, next to each other or at every second place.
sub case_ranges {
    my ($map) = @_;
    my @ranges;
    for my $code (sort { $a <=> $b } keys %$map) {
        my $delta = $map->{$code} - $code;
        next if $delta == 0;
        my $range = $ranges[-1];
        if ($range && $range->{delta} == $delta) {
            my $gap = $code - $range->{last};
            if ($gap <= 2 && ($range->{step} == 0 || $range->{step} == $gap)) {
                $range->{last} = $code;
                $range->{step} = $gap;
                next;
            }
        }
        push @ranges, { first => $code, last => $code, delta => $delta, step => 0 };
    }
    return @ranges;
}

sub print_table {
    my ($type, $name, @rows) = @_;
    print "constexpr std::array<$type, ", scalar @rows, "> k${name}{{\n";
    my $line = '   ';
    for my $row (@rows) {
        if (length($line) + length($row) + 2 > 100) { print "$line\n"; $line = '   ' }
        $line .= " $row,";
    }
    print "$line\n}};\n\n";
}

sub print_case_table {
    my ($name, $map) = @_;
    print_table('CaseRange', $name,
        map { sprintf '{0x%X, 0x%X, %d, %d}', $_->{first}, $_->{last}, $_->{delta}, $_->{step} || 1 }
        case_ranges($map));
}

print "// Written by tools/make_unicode_tables.pl from the character database, version ",
    Unicode::UCD::UnicodeVersion(), ".\n\n";
print "#include \"engine/text/unicode_tables.h\"\n\n#include <array>\n\nnamespace varo::engine {\n";
print "// clang-format off\nnamespace {\n\n";
print_table('CharacterRange', 'Letters', map { sprintf '{0x%X, 0x%X}', @$_ } @letters);
print_case_table('Fold', \%fold);
print_case_table('Upper', \%upper);
print_case_table('Lower', \%lower);
print "}  // namespace\n// clang-format on\n\n";
print "const std::span<const CharacterRange> kLetterRanges{kLetters};\n";
print "const std::span<const CaseRange> kFoldRanges{kFold};\n";
print "const std::span<const CaseRange> kUpperRanges{kUpper};\n";
print "const std::span<const CaseRange> kLowerRanges{kLower};\n\n";
print "}  // namespace varo::engine\n";
