// What a loaded rig file lets the station do, in words an operator can check
// before going on the air: which parameters the status walk reads, which the
// file can write, and whether Doppler tuning can follow in each direction.
#pragma once

// Survey the tables of the file loaded last into text (lines ending in '\n').
// Returns 0 when Doppler tuning works both ways, 1 when only one way or not
// at all.
int rig_survey(char *text, int size);

// 1 when the status walk reaches a value that gives a text for param.
int rig_survey_reads(int param);
// 1 when the write record of a frequency parameter has a writer.
int rig_survey_writes(int param);

// The survey in one line for the operator, e.g. "reads only pmFreq: Doppler
// tuning needs pmFreqA and pmFreqB". Returns 0 when Doppler tuning works both
// ways, 1 when one way, 2 when not at all.
int rig_survey_verdict(char *text, int size);
