// The dashboard's filters: which applications the list shows.
SegmentBar {}
