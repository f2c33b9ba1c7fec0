// The cutting of a request or datagram into fields that the rotctl server and
// the PstRotator client share. Peers written against the old programs expect
// strtok's exact behaviour, including its odd corners, so this reproduces it
// on a private copy instead of running strtok on the caller's buffer.
#pragma once

enum
{
    TEXT_FIELD_SIZE = 32 // a field holds at most 31 characters and its zero
};

// Find up to max tokens of work[0..length) as strtok would: runs of bytes that
// are not delimiters, the scan ending at the first zero. The delimiter that
// ends each token becomes a zero in work, as strtok leaves it. Token starts
// go to starts; returns their number.
int text_tokens(char *work, int length, const char *delimiters, int *starts, int max);

// Copy count bytes of work from start into a field, cut to its 31 characters
// and always terminated. The field then reads as a text up to its first zero.
void text_field_copy(char *field, const char *work, int start, int count);
