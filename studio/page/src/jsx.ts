// What the build makes of tags: calls of h, which are shorter than those of the newer jsx().
export { Fragment, h } from 'preact';
